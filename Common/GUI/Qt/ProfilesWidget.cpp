#include "ProfilesWidget.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QScrollBar>
#include <QUrl>

#include <vector>

#include "CommonGUIStrings.h"
#include "Log.h"
#include "Options.h"
#include "OptionsRules.h"
#include "OstrexStrings.h"
#include "ProfileStore.h"
#include "StudioProfiles.h"

using S = COstrexStrings;

namespace
{
QByteArray Utf8(const QString& text)
{
    return text.toUtf8();
}

QString FromStore(const CQMXTString& text)
{
    return QString::fromUtf8(text.c_str());
}

QStringList DroppedFiles(const QMimeData* data)
{
    QStringList files;
    if (!data || !data->hasUrls())
        return files;
    for (const QUrl& url : data->urls())
    {
        const QString suffix = QFileInfo(url.toLocalFile()).suffix().toLower();
        if (url.isLocalFile() && (suffix == "tvo" || suffix == "cpp" || suffix == "txt" || suffix == "cfg"))
            files.append(url.toLocalFile());
    }
    return files;
}
} // namespace

CProfileItem::CProfileItem(const QString& caption, const COptionsData& options, EKind kind)
    : m_sCaption(caption), m_options(options), m_eKind(kind)
{
    setText(caption);
    Qt::ItemFlags itemFlags = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    if (kind == eKindUser || kind == eKindStudio)
        itemFlags |= Qt::ItemIsDragEnabled;
    setFlags(itemFlags);
    if (kind == eKindStudio)
    {
        QFont italic = font();
        italic.setItalic(true);
        setFont(italic);
        setState(CCommonGUIStrings::QtText(CCommonGUIStrings::eStrReadOnly));
    }
}

void CProfileItem::setCaption(const QString& caption)
{
    m_sCaption = caption;
    setText(caption);
}

void CProfileItem::setState(const QString& state)
{
    setText(state.isEmpty() ? m_sCaption : m_sCaption + " - " + state);
    if (m_eKind == eKindUser)
        setToolTip(text());
}

CProfilesWidget::CProfilesWidget(QWidget* parent) : QListWidget(parent)
{
    COptionsData defaults;
    defaults.ConfigDefault();
    m_pCurrent = new CProfileItem(S::QtText(S::eStrCurrent), defaults, CProfileItem::eKindCurrent);
    m_pCurrent->setToolTip(S::QtText(S::eStrCurrentTip));
    m_pDefault = new CProfileItem(S::QtText(S::eStrDefaultSettings), defaults, CProfileItem::eKindDefault);
    m_pDefault->setToolTip(S::QtText(S::eStrDefaultSettingsTip));
    QListWidget::addItem(m_pCurrent);
    QListWidget::addItem(m_pDefault);
    setCurrentItem(m_pCurrent);
    setToolTip(S::QtText(S::eStrProfilesTip));
    setContextMenuPolicy(Qt::CustomContextMenu);
    setDragDropMode(QAbstractItemView::InternalMove);
    setAcceptDrops(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTextElideMode(Qt::ElideRight);
    fitWidth();
    connect(this, &QListWidget::customContextMenuRequested, this, &CProfilesWidget::showContextMenu);
    connect(this, &QListWidget::itemDoubleClicked, this, &CProfilesWidget::useProfile);
}

CProfileItem* CProfilesWidget::profileAt(int row) const
{
    return static_cast<CProfileItem*>(item(row));
}

CProfileItem* CProfilesWidget::selectedProfile() const
{
    return static_cast<CProfileItem*>(currentItem());
}

CProfileItem* CProfilesWidget::addItem(const QString& caption, const COptionsData& options, CProfileItem::EKind kind)
{
    auto* profile = new CProfileItem(caption, options, kind);
    if (kind == CProfileItem::eKindStudio)
        profile->setToolTip(CCommonGUIStrings::QtText(CCommonGUIStrings::eStrStudioProfileTip).arg(StudioProfilesFolder()));
    QListWidget::addItem(profile);
    setCurrentOptions(m_pCurrent->getOptions());
    return profile;
}

CProfileItem* CProfilesWidget::findProfile(const QString& caption) const
{
    for (int i = 0; i < count(); ++i)
        if (!profileAt(i)->isBuiltIn() && profileAt(i)->caption() == caption)
            return profileAt(i);
    return nullptr;
}

CProfileItem* CProfilesWidget::findMatchingProfile(const CProfileItem* target) const
{
    for (int i = 0; i < count(); ++i)
    {
        CProfileItem* candidate = profileAt(i);
        if (candidate != target && candidate != m_pCurrent && candidate->getOptions() == target->getOptions())
            return candidate;
    }
    return nullptr;
}

void CProfilesWidget::setCurrentOptions(const COptionsData& options)
{
    m_pCurrent->setOptions(options);
    setCurrentProfileState(findMatchingProfile(m_pCurrent) != nullptr);
}

void CProfilesWidget::setCurrentProfileState(bool matching)
{
    const CProfileItem* match = matching ? findMatchingProfile(m_pCurrent) : nullptr;
    m_pCurrent->setState(match ? match->caption() : QString());
    fitWidth();
}

void CProfilesWidget::fitWidth()
{
    int widest = 0;
    for (int i = 0; i < count(); ++i)
    {
        QFont itemFont = item(i)->font();
        widest = std::max(widest, QFontMetrics(itemFont).horizontalAdvance(item(i)->text()));
    }
    const int chrome = 2 * frameWidth() + verticalScrollBar()->sizeHint().width() + 16;
    setMinimumWidth(std::min(widest + chrome, kMaxWidth));
}

void CProfilesWidget::updateCurrentOptions(const COptionsData& options)
{
    setCurrentOptions(options);
}

void CProfilesWidget::removeProfiles(CProfileItem::EKind kind)
{
    for (int i = count() - 1; i >= 0; --i)
        if (profileAt(i)->kind() == kind)
            delete takeItem(i);
}

void CProfilesWidget::Load(CQMXPreferences& prefs, const char* prefix)
{
    removeProfiles(CProfileItem::eKindUser);
    removeProfiles(CProfileItem::eKindStudio);
    CProfileStore store;
    store.m_sLastImportPath = Utf8(m_sLastImportPath).constData();
    store.m_sLastExportPath = Utf8(m_sLastExportPath).constData();
    std::vector<std::unique_ptr<COptionsData>> loaded;
    std::vector<QString> captions;
    store.Load(
        prefs, prefix,
        [&](const CQMXTString& caption) -> CQMXPrefsStorable* {
            auto options = std::make_unique<COptionsData>();
            options->ConfigDefault();
            loaded.push_back(std::move(options));
            captions.push_back(FromStore(caption));
            return loaded.back().get();
        },
        [](const CQMXTString& message) { Log(eLogWarning, "%s", message.c_str()); });
    for (size_t i = 0; i < loaded.size(); ++i)
        addItem(captions[i], *loaded[i]);
    m_sLastImportPath = FromStore(store.m_sLastImportPath);
    m_sLastExportPath = FromStore(store.m_sLastExportPath);
    for (const SStudioProfile& studio : ReadStudioProfiles(StudioProfilesFolder()))
        addItem(studio.sCaption, studio.options, CProfileItem::eKindStudio);
}

bool CProfilesWidget::Save(CQMXPreferences& prefs, const char* prefix)
{
    CProfileStore store;
    store.m_sLastImportPath = Utf8(m_sLastImportPath).constData();
    store.m_sLastExportPath = Utf8(m_sLastExportPath).constData();
    std::vector<SProfileRef> refs;
    for (int i = 0; i < count(); ++i)
    {
        const CProfileItem* profile = profileAt(i);
        SProfileRef ref;
        ref.sCaption = Utf8(profile->caption()).constData();
        ref.pOptions = &profile->getOptions();
        ref.bBuiltIn = profile->kind() != CProfileItem::eKindUser; // studio profiles live in their folder
        refs.push_back(ref);
    }
    return store.Save(prefs, prefix, refs);
}

bool CProfilesWidget::LoadProfile(CQMXPreferences& prefs, const char* prefix, const QString& entry,
                                  COptionsData& options)
{
    return CProfileStore::LoadProfile(prefs, prefix, Utf8(entry).constData(), options);
}

bool CProfilesWidget::SaveProfile(CQMXPreferences& prefs, const char* prefix, int position, const CProfileItem& item)
{
    const CQMXTString entry = CProfileStore::EntryName(position, Utf8(item.caption()).constData());
    return CProfileStore::SaveProfile(prefs, prefix, entry, item.getOptions());
}

QString CProfilesWidget::getNewProfileName(const QString& suggestion)
{
    bool ok = false;
    const QString name = QInputDialog::getText(this, S::QtText(S::eStrEnterName), S::QtText(S::eStrName),
                                               QLineEdit::Normal, suggestion, &ok);
    return ok ? name.trimmed() : QString();
}

void CProfilesWidget::saveCurrentProfile()
{
    const QString name = getNewProfileName(QString());
    if (name.isEmpty())
        return;
    CProfileItem* existing = findProfile(name);
    if (existing && !existing->isReadOnly())
        existing->setOptions(m_pCurrent->getOptions());
    else
        addItem(name, m_pCurrent->getOptions());
    setCurrentOptions(m_pCurrent->getOptions());
}

void CProfilesWidget::useProfile()
{
    CProfileItem* profile = selectedProfile();
    if (!profile || profile == m_pCurrent)
        return;
    setCurrentOptions(profile->getOptions());
    emit useOptions(profile->getOptions());
}

void CProfilesWidget::renameProfile()
{
    CProfileItem* profile = selectedProfile();
    if (!profile || profile->isReadOnly())
        return;
    const QString name = getNewProfileName(profile->caption());
    if (name.isEmpty())
        return;
    profile->setCaption(name);
    setCurrentOptions(m_pCurrent->getOptions());
}

void CProfilesWidget::deleteCurrentItem()
{
    CProfileItem* profile = selectedProfile();
    if (!profile || profile->isReadOnly())
        return;
    if (QMessageBox::question(this, S::QtText(S::eStrDeleteProfile), S::QtText(S::eStrDeleteProfileQuestion),
                              QMessageBox::Yes | QMessageBox::No, QMessageBox::No) != QMessageBox::Yes)
        return;
    delete takeItem(row(profile));
    setCurrentOptions(m_pCurrent->getOptions());
}

CProfileItem* CProfilesWidget::importFile(const QString& path)
{
    COptions options;
    const COptions defaults;
    if (options.ReadConfig(Utf8(path).constData()) == 0)
    {
        Log(eLogError, "%s", Utf8(CCommonGUIStrings::QtText(CCommonGUIStrings::eStrReadOptionsFailed).arg(path)).constData());
        return nullptr;
    }
    if (KeepProgramLaunchesOf(defaults, options))
        Log(eLogWarning, "%s", Utf8(CCommonGUIStrings::QtText(CCommonGUIStrings::eStrDisarmedActions).arg(path)).constData());
    m_sLastImportPath = QFileInfo(path).absolutePath();
    return addItem(QFileInfo(path).completeBaseName(), options);
}

bool CProfilesWidget::exportFile(const CProfileItem* profile, const QString& path)
{
    if (!profile)
        return false;
    COptions options;
    static_cast<COptionsData&>(options) = profile->getOptions();
    if (!options.WriteConfig(Utf8(path).constData()))
    {
        Log(eLogError, "Error: Failed to write '%s'.", Utf8(path).constData());
        return false;
    }
    m_sLastExportPath = QFileInfo(path).absolutePath();
    return true;
}

void CProfilesWidget::importProfile()
{
    const QString filters = S::QtText(S::eStrFilterConfig) + ";;" + S::QtText(S::eStrFilterText) + ";;" +
                            S::QtText(S::eStrFilterVeldra) + ";;" + S::QtText(S::eStrFilterAll);
    const QString path = QFileDialog::getOpenFileName(this, S::QtText(S::eStrOpenImportFile), m_sLastImportPath, filters);
    if (!path.isEmpty())
        importFile(path);
}

void CProfilesWidget::exportProfile()
{
    const CProfileItem* profile = selectedProfile();
    if (!profile)
        return;
    const QString filters = S::QtText(S::eStrFilterConfig) + ";;" + S::QtText(S::eStrFilterText);
    const QString path = QFileDialog::getSaveFileName(this, S::QtText(S::eStrExportToFile),
                                                      m_sLastExportPath + "/" + profile->caption() + ".cfg", filters);
    if (!path.isEmpty())
        exportFile(profile, path);
}

void CProfilesWidget::showContextMenu(const QPoint& position)
{
    const CProfileItem* profile = selectedProfile();
    const bool editable = profile && !profile->isReadOnly();
    QMenu menu(this);
    menu.addAction(S::QtText(S::eStrSaveAs), this, &CProfilesWidget::saveCurrentProfile);
    menu.addAction(S::QtText(S::eStrSetAs), this, &CProfilesWidget::useProfile)->setEnabled(profile && profile != m_pCurrent);
    menu.addAction(S::QtText(S::eStrRename), this, &CProfilesWidget::renameProfile)->setEnabled(editable);
    menu.addAction(S::QtText(S::eStrDelete), this, &CProfilesWidget::deleteCurrentItem)->setEnabled(editable);
    menu.addSeparator();
    menu.addAction(S::QtText(S::eStrImportFromFile), this, &CProfilesWidget::importProfile);
    menu.addAction(S::QtText(S::eStrExportToFile), this, &CProfilesWidget::exportProfile)->setEnabled(profile != nullptr);
    menu.exec(mapToGlobal(position));
}

void CProfilesWidget::dragEnterEvent(QDragEnterEvent* event)
{
    if (!DroppedFiles(event->mimeData()).isEmpty())
        event->acceptProposedAction();
    else
        QListWidget::dragEnterEvent(event);
}

void CProfilesWidget::dragMoveEvent(QDragMoveEvent* event)
{
    if (!DroppedFiles(event->mimeData()).isEmpty())
        event->acceptProposedAction();
    else
        QListWidget::dragMoveEvent(event);
}

void CProfilesWidget::dropEvent(QDropEvent* event)
{
    const QStringList files = DroppedFiles(event->mimeData());
    if (files.isEmpty())
    {
        QListWidget::dropEvent(event);
        return;
    }
    event->acceptProposedAction();
    for (const QString& path : files)
        importFile(path);
}
