#include "OptionsWidget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QGroupBox>
#include <QLineEdit>
#include <QMimeData>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QStandardItemModel>
#include <QTabWidget>
#include <QUrl>
#include <QVBoxLayout>

#include "CommonGUIStrings.h"
#include "Log.h"
#include "OptionsRules.h"
#include "OptionsTables.h"
#include "OstrexStrings.h"
#include "VectorFormatWidget.h"

using S = COstrexStrings;
using O = COptionsData;

namespace
{
bool IsOptionsFile(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    return suffix == "tvo" || suffix == "cpp" || suffix == "txt" || suffix == "cfg";
}

// The first local file of a drag that can be read as options, or an empty string.
QString DroppedOptionsFile(const QMimeData* data)
{
    if (!data || !data->hasUrls())
        return QString();
    for (const QUrl& url : data->urls())
        if (url.isLocalFile() && IsOptionsFile(url.toLocalFile()))
            return url.toLocalFile();
    return QString();
}

int Property(const QObject* object, const char* name)
{
    const QVariant value = object ? object->property(name) : QVariant();
    return value.isValid() ? value.toInt() : -1;
}
} // namespace

COptionsWidget::COptionsWidget(QWidget* parent) : QWidget(parent), m_pTabs(new QTabWidget(this))
{
    m_pOptions = &m_ownOptions;
    m_pTabs->addTab(buildGeometryTab(), S::QtText(S::eStrGeometry));
    m_pTabs->setTabToolTip(0, S::QtText(S::eStrGeometryTip));
    m_pTabs->addTab(buildMaterialsTab(), S::QtText(S::eStrMaterials));
    m_pTabs->setTabToolTip(1, S::QtText(S::eStrMaterialsTip));
    m_pTabs->addTab(buildTransformationsTab(), S::QtText(S::eStrTransformations));
    m_pTabs->setTabToolTip(2, S::QtText(S::eStrTransformationsTip));
    m_pTabs->addTab(buildUserOptionsTab(), S::QtText(S::eStrUserOptions));
    m_pTabs->setTabToolTip(3, S::QtText(S::eStrUserOptionsTip));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pTabs);
    setAcceptDrops(true);
    refreshGUI();
}

void COptionsWidget::Init(COptions& options)
{
    m_pOptions = &options;
    refreshGUI();
}

QList<QWidget*> COptionsWidget::optionControls() const
{
    return m_optionControls;
}

QWidget* COptionsWidget::control(const char* property, int index) const
{
    for (QWidget* widget : m_optionControls)
        if (Property(widget, property) == index)
            return widget;
    return nullptr;
}

void COptionsWidget::setControlEnabled(QWidget* widget, bool enabled)
{
    if (!widget)
        return;
    widget->setEnabled(enabled);
    for (QWidget* companion : m_companions.values(widget))
        companion->setEnabled(enabled);
}

void COptionsWidget::refreshGUI()
{
    m_bRefreshing = true;
    setControlsFromOptions();
    m_bRefreshing = false;
    updateEnabledStates();
    UpdateAlignmentLabel();
}

void COptionsWidget::setControlsFromOptions()
{
    const COptions& o = *m_pOptions;
    for (QWidget* widget : m_optionControls)
    {
        const QSignalBlocker block(widget);
        if (auto* box = qobject_cast<QCheckBox*>(widget))
            box->setChecked(o.GetOption(static_cast<O::EBools>(Property(box, "bool_option_enum"))));
        else if (auto* group = qobject_cast<QGroupBox*>(widget))
            group->setChecked(o.GetOption(static_cast<O::EBools>(Property(group, "bool_option_enum"))));
        else if (auto* spin = qobject_cast<QSpinBox*>(widget))
            spin->setValue(static_cast<int>(o.GetOption(static_cast<O::EInts>(Property(spin, "int_option_enum")))));
        else if (auto* real = qobject_cast<QDoubleSpinBox*>(widget))
            real->setValue(o.GetOption(static_cast<O::EFloats>(Property(real, "float_option_enum"))));
        else if (auto* edit = qobject_cast<QLineEdit*>(widget))
            edit->setText(QString::fromUtf8(
                o.GetOption(static_cast<O::EStrings>(Property(edit, "string_option_enum"))).c_str()));
    }
    // A checkable group box enables its children by its own state; the rules below refine that.
    const QSignalBlocker blockPrim(m_pPrimitiveType);
    m_pPrimitiveType->setCurrentIndex(PrimitiveTypeRowOf(o.GetOption(O::ePrimType), o.GetOption(O::eIndexed)));
    const QSignalBlocker blockSort(m_pSortingMethod);
    m_pSortingMethod->setCurrentIndex(TriSortRowOf(o.GetOption(O::eTriSort)));
    const QSignalBlocker blockCS(m_pCoordSystem);
    m_pCoordSystem->setCurrentIndex(o.GetOption(O::eCS) == eCoordSystemDirectX ? 1 : 0);
    const QSignalBlocker blockSpace(m_pSpace);
    m_pSpace->setCurrentIndex(o.GetOption(O::eExportModelSpace) ? 0 : 1);
    for (CVectorFormatWidget* row : m_vectorRows)
        row->setVectorOpt(o.GetOption(row->format()));
}

void COptionsWidget::updateEnabledStates()
{
    const COptions& o = *m_pOptions;
    const bool custom = o.GetOption(O::eUseCustomOptSettings);
    setControlEnabled(m_pSortingMethod, custom);
    setControlEnabled(m_pSortVertices, custom);
    // Strip order only makes sense for strips.
    if (auto* model = qobject_cast<QStandardItemModel*>(m_pSortingMethod->model()))
        model->item(TriSortRowOf(eTriSortStrips))->setEnabled(o.GetOption(O::ePrimType) == ePrimTriangleStrips);

    const bool tangents = o.GetOption(O::eTangentSpace);
    setControlEnabled(control("float_option_enum", O::eTangentSpaceVtxSplit), tangents);
    setControlEnabled(control("int_option_enum", O::eTSUseUVW), tangents);
    const bool skin = o.GetOption(O::eExportSkin);
    setControlEnabled(control("int_option_enum", O::eBoneLimit), skin);
    setControlEnabled(control("bool_option_enum", O::eIndexAnimations), o.GetOption(O::eExportAnimations));
    setControlEnabled(control("int_option_enum", O::eStaticFrame), !o.GetOption(O::eExportModelSpace));
    const bool channels = o.GetOption(O::eExportMappingChannels);
    for (CVectorFormatWidget* row : m_vectorRows)
    {
        const O::EVectorFormats f = row->format();
        bool enabled = true;
        if (f == O::eVcOptTan || f == O::eVcOptBin)
            enabled = tangents;
        else if (f == O::eVcOptBoneInd || f == O::eVcOptBoneWt)
            enabled = skin;
        else if (f > O::eVcOptUVW0)
            enabled = channels;
        row->setEnabled(enabled);
    }
    m_pUnpackMatrix->setEnabled(IsSmallIntegerType(o.GetOption(O::eVcOptPos, CVectorOpt::eDataType)));
}

void COptionsWidget::changed()
{
    updateEnabledStates();
    emit optionsChanged(*m_pOptions);
}

void COptionsWidget::onCheckBoxStateChanged(int state)
{
    const int option = Property(sender(), "bool_option_enum");
    if (m_bRefreshing || option < 0)
        return;
    m_pOptions->SetOption(static_cast<O::EBools>(option), state != Qt::Unchecked);
    if (option == O::eUseCustomOptSettings)
        HandleRecommendedOptimisations();
    changed();
}

void COptionsWidget::onGroupToggled(bool on)
{
    onCheckBoxStateChanged(on ? Qt::Checked : Qt::Unchecked);
}

void COptionsWidget::onValueChanged(int value)
{
    const int option = Property(sender(), "int_option_enum");
    if (m_bRefreshing || option < 0)
        return;
    m_pOptions->SetOption(static_cast<O::EInts>(option), static_cast<unsigned>(value));
    changed();
}

void COptionsWidget::onValueChanged(double value)
{
    const int option = Property(sender(), "float_option_enum");
    if (m_bRefreshing || option < 0)
        return;
    m_pOptions->SetOption(static_cast<O::EFloats>(option), static_cast<float>(value));
    changed();
}

void COptionsWidget::onTextChanged(const QString& text)
{
    const int option = Property(sender(), "string_option_enum");
    if (m_bRefreshing || option < 0)
        return;
    m_pOptions->SetOption(static_cast<O::EStrings>(option), CQMXTString(text.toUtf8().constData()));
    changed();
}

void COptionsWidget::onPrimitiveTypeSelected(int row)
{
    if (row < 0 || row >= 4)
        return;
    m_pOptions->SetOption(O::eIndexed, g_primitiveTypeRows[row].bIndexed);
    m_pOptions->SetOption(O::ePrimType, g_primitiveTypeRows[row].ePrimType);
    HandleRecommendedOptimisations();
    changed();
}

void COptionsWidget::onTriSortingTypeSelected(int row)
{
    if (row < 0 || row >= 4)
        return;
    m_pOptions->SetOption(O::eTriSort, g_triSortRows[row].eSort);
    changed();
}

void COptionsWidget::onCSSelected(int row)
{
    if (row < 0)
        return;
    m_pOptions->SetOption(O::eCS, static_cast<ECoordSystem>(m_pCoordSystem->itemData(row).toUInt()));
    changed();
}

void COptionsWidget::onSpaceSelected(int row)
{
    if (row < 0)
        return;
    m_pOptions->SetOption(O::eExportModelSpace, row == 0);
    changed();
}

void COptionsWidget::onDataTypeChanged(O::EVectorFormats format, const CVectorOpt& value)
{
    m_pOptions->SetOption(format, value);
    // The stored mask may be narrower than what the row asked for; show what was kept.
    for (CVectorFormatWidget* row : m_vectorRows)
        if (row->format() == format && row->vectorOpt() != m_pOptions->GetOption(format))
            row->setVectorOpt(m_pOptions->GetOption(format));
    if (format == O::eVcOptPos)
        onPositionDataTypeChanged();
    onVectorTypeChanged();
    changed();
    emit vectorFormatChanged();
}

void COptionsWidget::onPositionDataTypeChanged()
{
    // Without a small integer type the unpack matrix brings nothing and is left off.
    if (!IsSmallIntegerType(m_pOptions->GetOption(O::eVcOptPos, CVectorOpt::eDataType)))
    {
        m_pOptions->SetOption(O::eUnpackMatrix, false);
        const QSignalBlocker block(m_pUnpackMatrix);
        m_pUnpackMatrix->setChecked(false);
    }
}

void COptionsWidget::onVectorTypeChanged()
{
    UpdateAlignmentLabel();
}

void COptionsWidget::HandleRecommendedOptimisations()
{
    if (m_pOptions->GetOption(O::eUseCustomOptSettings))
        return;
    m_pOptions->HandleOptimisations();
    const QSignalBlocker blockSort(m_pSortingMethod);
    m_pSortingMethod->setCurrentIndex(TriSortRowOf(m_pOptions->GetOption(O::eTriSort)));
    const QSignalBlocker blockBox(m_pSortVertices);
    m_pSortVertices->setChecked(m_pOptions->GetOption(O::eSortVertices));
}

void COptionsWidget::UpdateAlignmentLabel()
{
    const unsigned alignment = VertexDataAlignment(*m_pOptions);
    m_pAlignData->setText(S::QtText(AlignmentText(alignment)));
    m_pOptions->SetOption(O::ePadDataTo, alignment);
}

void COptionsWidget::onClicked()
{
    auto* edit = qobject_cast<QLineEdit*>(sender() ? sender()->property("chooser_target").value<QObject*>() : nullptr);
    if (!edit)
        return;
    const int filter = Property(sender(), "chooser_filter");
    QString filters = filter >= 0 ? S::QtText(filter) + ";;" : QString();
    filters += S::QtText(S::eStrFilterAll);
    const QString path = QFileDialog::getOpenFileName(this, S::QtText(S::eStrChooseFile), edit->text(), filters);
    if (!path.isEmpty())
        edit->setText(path);
}

void COptionsWidget::onWDClicked()
{
    auto* edit = qobject_cast<QLineEdit*>(sender() ? sender()->property("chooser_target").value<QObject*>() : nullptr);
    if (!edit)
        return;
    const QString path = QFileDialog::getExistingDirectory(this, S::QtText(S::eStrChooseWorkingDirectory), edit->text());
    if (!path.isEmpty())
        edit->setText(path);
}

bool COptionsWidget::readOptionsFile(const QString& path)
{
    COptions read = *m_pOptions;
    if (read.ReadConfig(path.toUtf8().constData()) == 0)
    {
        Log(eLogError, "%s",
            CCommonGUIStrings::QtText(CCommonGUIStrings::eStrReadOptionsFailed).arg(path).toUtf8().constData());
        return false;
    }
    if (KeepProgramLaunchesOf(*m_pOptions, read))
        Log(eLogWarning, "%s",
            CCommonGUIStrings::QtText(CCommonGUIStrings::eStrDisarmedActions).arg(path).toUtf8().constData());
    static_cast<COptionsData&>(*m_pOptions) = read;
    refreshGUI();
    emit optionsChanged(*m_pOptions);
    return true;
}

void COptionsWidget::dragEnterEvent(QDragEnterEvent* event)
{
    if (!DroppedOptionsFile(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void COptionsWidget::dropEvent(QDropEvent* event)
{
    const QString path = DroppedOptionsFile(event->mimeData());
    if (path.isEmpty())
        return;
    event->acceptProposedAction();
    readOptionsFile(path);
}
