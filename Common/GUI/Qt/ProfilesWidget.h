// The profile list of the options window: the two built-in entries ("[Current]", the options being
// edited, and "Default Settings"), the user's profiles (stored in the preferences through
// CProfileStore) and the studio's read-only profiles (StudioProfiles.h).
//
// The context menu saves the current options as a new profile, uses a profile (its options become
// the current ones: useOptions), renames, deletes (after a confirmation), imports an options file
// as a profile and exports a profile as one. Built-in entries are never stored, renamed or deleted;
// studio profiles can be used and exported only. Dropping tvo/cpp/txt/cfg files imports them;
// profiles can be reordered by dragging. Imported and studio profiles keep the default settings for
// starting programs after export, whatever their files say. When the current options equal a profile's, the current
// entry's caption names it: "[Current] - <caption>".
#pragma once

#include <QListWidget>
#include <QListWidgetItem>

#include "OptionsData.h"

class CQMXPreferences;

class CProfileItem : public QListWidgetItem
{
  public:
    enum EKind
    {
        eKindCurrent,
        eKindDefault,
        eKindUser,
        eKindStudio
    };

    CProfileItem(const QString& caption, const COptionsData& options, EKind kind);

    void setOptions(const COptionsData& options) { m_options = options; }
    const COptionsData& getOptions() const { return m_options; }
    // The caption without any state marker.
    const QString& caption() const { return m_sCaption; }
    void setCaption(const QString& caption);
    EKind kind() const { return m_eKind; }
    bool isBuiltIn() const { return m_eKind == eKindCurrent || m_eKind == eKindDefault; }
    bool isReadOnly() const { return m_eKind != eKindUser; }
    // Shows the caption followed by " - " and state, or the bare caption for an empty state.
    void setState(const QString& state);

  private:
    QString m_sCaption;
    COptionsData m_options;
    EKind m_eKind;
};

class CProfilesWidget : public QListWidget
{
    Q_OBJECT
  public:
    explicit CProfilesWidget(QWidget* parent = nullptr);

    // Reads the user's profiles under prefix (replacing those shown) and the studio profiles.
    void Load(CQMXPreferences& prefs, const char* prefix);
    // Stores the user's profiles in list order and the last import/export directories.
    bool Save(CQMXPreferences& prefs, const char* prefix);
    static bool LoadProfile(CQMXPreferences& prefs, const char* prefix, const QString& entry, COptionsData& options);
    static bool SaveProfile(CQMXPreferences& prefs, const char* prefix, int position, const CProfileItem& item);

    CProfileItem* addItem(const QString& caption, const COptionsData& options,
                          CProfileItem::EKind kind = CProfileItem::eKindUser);
    CProfileItem* currentOptionsItem() const { return m_pCurrent; }
    CProfileItem* defaultOptionsItem() const { return m_pDefault; }
    CProfileItem* profileAt(int row) const;
    CProfileItem* findProfile(const QString& caption) const;
    // The first profile (not the current entry) whose options equal item's, or null.
    CProfileItem* findMatchingProfile(const CProfileItem* item) const;
    void setCurrentOptions(const COptionsData& options);
    // Marks the current entry with the caption of the matching profile, or clears the mark.
    void setCurrentProfileState(bool matching);
    // Imports one options file as a profile (caption: the file name without extension).
    CProfileItem* importFile(const QString& path);
    // Writes item's options as an options text file.
    bool exportFile(const CProfileItem* item, const QString& path);

    QString m_sLastImportPath;
    QString m_sLastExportPath;

  signals:
    void useOptions(const COptionsData& options);

  public slots:
    void updateCurrentOptions(const COptionsData& options);
    void saveCurrentProfile();
    void useProfile();
    void renameProfile();
    void deleteCurrentItem();
    void importProfile();
    void exportProfile();
    void showContextMenu(const QPoint& position);

  protected:
    // Asks for a profile name; empty when cancelled.
    virtual QString getNewProfileName(const QString& suggestion);
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    CProfileItem* selectedProfile() const;
    // Widens the list to show every caption whole, up to kMaxWidth; longer ones are elided.
    void fitWidth();
    static constexpr int kMaxWidth = 360;
    void removeProfiles(CProfileItem::EKind kind);

    CProfileItem* m_pCurrent;
    CProfileItem* m_pDefault;
};
