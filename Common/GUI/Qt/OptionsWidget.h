// COptionsWidget: the options editor, four tabs (geometry, materials, transformations, user
// options) over a COptions record held by pointer.
//
// Every control that edits a plain option carries a dynamic property with the option's index:
// "bool_option_enum" (check boxes and checkable group boxes), "int_option_enum" (spin boxes),
// "float_option_enum" (the double spin box) or "string_option_enum" (line edits). The generic slots
// read that property from the sender and store the value with the matching SetOption; controls
// without it are ignored there. Choice lists (primitive type, sorting method, co-ordinate system,
// model/world space) and the vertex-format rows have slots of their own. Every change emits
// optionsChanged.
//
// Two options have no control of their own: bIndexed is set by the primitive-type list, and
// uiPadDataTo follows the alignment shown on the "Align vertex data" box (UpdateAlignmentLabel).
//
// Controls are enabled only with the option that governs them: the geometry settings with
// "Export Geometry", the sorting method and "Sort vertices" with custom optimisation settings (and
// the strip order only with strips), the tangent-space settings and rows with tangent space, the
// bone settings and rows with skinning, the UVW 1..7 rows with mapping channels, the animation index
// with animations, the static frame with world space, the viewer path with the viewer.
//
// Dropping a file whose extension is tvo, cpp, txt or cfg reads it as options (COptions::ReadConfig);
// the settings that start a program after export stay as they were (a file never sets them).
#pragma once

#include <QList>
#include <QMultiHash>
#include <QWidget>

#include "Options.h"

class QCheckBox;
class QComboBox;
class QDragEnterEvent;
class QDropEvent;
class QGridLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QTabWidget;
class CVectorFormatWidget;

class COptionsWidget : public QWidget
{
    Q_OBJECT
  public:
    explicit COptionsWidget(QWidget* parent = nullptr);

    // Edits options from now on and shows them.
    void Init(COptions& options);
    COptions* options() const { return m_pOptions; }

    // Reads a dropped or chosen options file into the options; false (with a logged error) when the
    // file holds no options.
    bool readOptionsFile(const QString& path);

    QTabWidget* tabs() const { return m_pTabs; }
    QComboBox* primitiveTypeList() const { return m_pPrimitiveType; }
    QComboBox* sortingMethodList() const { return m_pSortingMethod; }
    QComboBox* coordSystemList() const { return m_pCoordSystem; }
    QComboBox* spaceList() const { return m_pSpace; }
    QCheckBox* alignmentBox() const { return m_pAlignData; }
    const QList<CVectorFormatWidget*>& vectorRows() const { return m_vectorRows; }
    // Every control carrying an option property, in tab order.
    QList<QWidget*> optionControls() const;

  signals:
    void optionsChanged(const COptions& options);
    void vectorFormatChanged();

  public slots:
    void refreshGUI();
    void onCheckBoxStateChanged(int state);
    void onGroupToggled(bool on);
    void onValueChanged(int value);
    void onValueChanged(double value);
    void onTextChanged(const QString& text);
    void onPrimitiveTypeSelected(int row);
    void onTriSortingTypeSelected(int row);
    void onCSSelected(int row);
    void onSpaceSelected(int row);
    void onDataTypeChanged(COptionsData::EVectorFormats format, const CVectorOpt& value);
    void onPositionDataTypeChanged();
    void onVectorTypeChanged();
    void onClicked();
    void onWDClicked();
    void HandleRecommendedOptimisations();
    void UpdateAlignmentLabel();

  protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    QWidget* buildGeometryTab();
    QWidget* buildVertexFormatGroup();
    QWidget* buildMaterialsTab();
    QWidget* buildTransformationsTab();
    QWidget* buildUserOptionsTab();

    QCheckBox* boolBox(const QString& text, const QString& tip, COptionsData::EBools option);
    QGroupBox* boolGroup(int text, int tip, COptionsData::EBools option);
    void addIntRow(QGridLayout* grid, int row, int text, int tip, COptionsData::EInts option, int minimum,
                   int maximum);
    void addStringRow(QGridLayout* grid, int row, int text, int tip, COptionsData::EStrings option,
                      int chooserFilter, bool directory = false);
    QComboBox* choiceList(int tip);

    // The control carrying this option property, or null.
    QWidget* control(const char* property, int index) const;
    // Enables a control together with its label and chooser button.
    void setControlEnabled(QWidget* widget, bool enabled);
    void setControlsFromOptions();
    void updateEnabledStates();
    void changed();

    COptions* m_pOptions = nullptr;
    COptions m_ownOptions; // edited until Init names the real record
    QTabWidget* m_pTabs;
    QComboBox* m_pPrimitiveType = nullptr;
    QComboBox* m_pSortingMethod = nullptr;
    QComboBox* m_pCoordSystem = nullptr;
    QComboBox* m_pSpace = nullptr;
    QCheckBox* m_pAlignData = nullptr;
    QCheckBox* m_pUnpackMatrix = nullptr;
    QCheckBox* m_pSortVertices = nullptr;
    QList<CVectorFormatWidget*> m_vectorRows;
    QList<QWidget*> m_optionControls;
    QMultiHash<QWidget*, QWidget*> m_companions; // label and chooser button of a control
    bool m_bRefreshing = false;
};
