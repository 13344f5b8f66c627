// The controls of the four tabs of the options window.
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include "CommonGUIStrings.h"
#include "OptionsTables.h"
#include "OptionsWidget.h"
#include "OstrexStrings.h"
#include "VectorFormatWidget.h"

using S = COstrexStrings;

namespace
{
QString Text(int n)
{
    return S::QtText(n);
}

QWidget* Page(QLayout* layout)
{
    auto* page = new QWidget;
    page->setLayout(layout);
    return page;
}
} // namespace

QCheckBox* COptionsWidget::boolBox(const QString& text, const QString& tip, COptionsData::EBools option)
{
    auto* box = new QCheckBox(text);
    box->setToolTip(tip);
    box->setProperty("bool_option_enum", static_cast<int>(option));
    connect(box, &QCheckBox::stateChanged, this, &COptionsWidget::onCheckBoxStateChanged);
    m_optionControls.append(box);
    return box;
}

QGroupBox* COptionsWidget::boolGroup(int text, int tip, COptionsData::EBools option)
{
    auto* group = new QGroupBox(Text(text));
    group->setToolTip(Text(tip));
    group->setCheckable(true);
    group->setProperty("bool_option_enum", static_cast<int>(option));
    connect(group, &QGroupBox::toggled, this, &COptionsWidget::onGroupToggled);
    m_optionControls.append(group);
    return group;
}

QComboBox* COptionsWidget::choiceList(int tip)
{
    auto* list = new QComboBox;
    if (tip >= 0)
        list->setToolTip(Text(tip));
    return list;
}

void COptionsWidget::addIntRow(QGridLayout* grid, int row, int text, int tip, COptionsData::EInts option,
                               int minimum, int maximum)
{
    auto* spin = new QSpinBox;
    spin->setRange(minimum, maximum);
    spin->setToolTip(Text(tip));
    spin->setProperty("int_option_enum", static_cast<int>(option));
    connect(spin, qOverload<int>(&QSpinBox::valueChanged), this, qOverload<int>(&COptionsWidget::onValueChanged));
    auto* label = new QLabel(Text(text) + RangeCaption(minimum, maximum));
    label->setBuddy(spin);
    label->setToolTip(Text(tip));
    grid->addWidget(label, row, 0);
    grid->addWidget(spin, row, 1);
    m_companions.insert(spin, label);
    m_optionControls.append(spin);
}

void COptionsWidget::addStringRow(QGridLayout* grid, int row, int text, int tip, COptionsData::EStrings option,
                                  int chooserFilter, bool directory)
{
    auto* edit = new QLineEdit;
    edit->setToolTip(Text(tip));
    edit->setProperty("string_option_enum", static_cast<int>(option));
    edit->setMinimumWidth(220);
    connect(edit, &QLineEdit::textChanged, this, &COptionsWidget::onTextChanged);
    auto* label = new QLabel(Text(text));
    label->setBuddy(edit);
    label->setToolTip(Text(tip));
    auto* chooser = new QPushButton("...");
    chooser->setToolTip(Text(directory ? S::eStrChooseWorkingDirectory : S::eStrChooseFile));
    chooser->setProperty("chooser_target", QVariant::fromValue<QObject*>(edit));
    chooser->setProperty("chooser_filter", chooserFilter);
    chooser->setMaximumWidth(chooser->fontMetrics().horizontalAdvance("...") + 24);
    if (directory)
        connect(chooser, &QPushButton::clicked, this, &COptionsWidget::onWDClicked);
    else
        connect(chooser, &QPushButton::clicked, this, &COptionsWidget::onClicked);
    grid->addWidget(label, row, 0);
    grid->addWidget(edit, row, 1);
    grid->addWidget(chooser, row, 2);
    m_companions.insert(edit, label);
    m_companions.insert(edit, chooser);
    m_optionControls.append(edit);
}

QWidget* COptionsWidget::buildGeometryTab()
{
    QGroupBox* geometry = boolGroup(S::eStrExportGeometry, S::eStrExportGeometryTip, COptionsData::eExportGeometry);

    auto* primitive = new QGridLayout;
    m_pPrimitiveType = choiceList(-1);
    for (const SPrimitiveTypeRow& row : g_primitiveTypeRows)
        m_pPrimitiveType->addItem(Text(row.iText));
    connect(m_pPrimitiveType, qOverload<int>(&QComboBox::activated), this, &COptionsWidget::onPrimitiveTypeSelected);
    primitive->addWidget(new QLabel(Text(S::eStrPrimitiveType)), 0, 0);
    primitive->addWidget(m_pPrimitiveType, 0, 1);

    auto* triangles = new QGroupBox(Text(S::eStrTriangleOptimisations));
    auto* triangleGrid = new QGridLayout(triangles);
    triangleGrid->addWidget(boolBox(Text(S::eStrUseCustomOpt), Text(S::eStrUseCustomOptTip), COptionsData::eUseCustomOptSettings),
                            0, 0, 1, 2);
    m_pSortingMethod = choiceList(-1);
    for (const STriSortRow& row : g_triSortRows)
        m_pSortingMethod->addItem(Text(row.iText));
    connect(m_pSortingMethod, qOverload<int>(&QComboBox::activated), this, &COptionsWidget::onTriSortingTypeSelected);
    auto* sortLabel = new QLabel(Text(S::eStrSortingMethod));
    m_companions.insert(m_pSortingMethod, sortLabel);
    triangleGrid->addWidget(sortLabel, 1, 0);
    triangleGrid->addWidget(m_pSortingMethod, 1, 1);
    m_pSortVertices = boolBox(Text(S::eStrSortVertices), Text(S::eStrSortVerticesTip), COptionsData::eSortVertices);
    triangleGrid->addWidget(m_pSortVertices, 2, 0, 1, 2);
    triangleGrid->setColumnStretch(1, 1);

    auto* vertices = new QGroupBox(Text(S::eStrVertexOptimisations));
    auto* vertexGrid = new QGridLayout(vertices);
    vertexGrid->addWidget(boolBox(Text(S::eStrInterleave), Text(S::eStrInterleaveTip), COptionsData::eInterleaved), 0, 0, 1, 2);
    m_pAlignData = boolBox(Text(S::eStrAlignData32), Text(S::eStrAlignDataTip), COptionsData::eAlignData);
    vertexGrid->addWidget(m_pAlignData, 1, 0, 1, 2);
    vertexGrid->addWidget(boolBox(Text(S::eStrGenerateTangentSpace), Text(S::eStrGenerateTangentSpaceTip), COptionsData::eTangentSpace),
                          2, 0, 1, 2);
    auto* split = new QDoubleSpinBox;
    split->setRange(-1.0, 1.0);
    split->setSingleStep(0.05);
    split->setDecimals(2);
    split->setToolTip(Text(S::eStrVertexSplittingTip));
    split->setProperty("float_option_enum", static_cast<int>(COptionsData::eTangentSpaceVtxSplit));
    connect(split, qOverload<double>(&QDoubleSpinBox::valueChanged), this,
            qOverload<double>(&COptionsWidget::onValueChanged));
    auto* splitLabel = new QLabel(Text(S::eStrVertexSplitting) + RangeCaption(-1, 1));
    splitLabel->setBuddy(split);
    m_companions.insert(split, splitLabel);
    m_optionControls.append(split);
    vertexGrid->addWidget(splitLabel, 3, 0);
    vertexGrid->addWidget(split, 3, 1);
    // The tangent space is taken from one UVW set; its caption is the "UVW n" text without the number.
    addIntRow(vertexGrid, 4, S::eStrUVW0, S::eStrGenerateTangentSpaceTip, COptionsData::eTSUseUVW, 0, 7);
    if (auto* label = qobject_cast<QLabel*>(m_companions.value(control("int_option_enum", COptionsData::eTSUseUVW))))
        label->setText(Text(S::eStrUVW0).chopped(2) + RangeCaption(0, 7));
    vertexGrid->addWidget(boolBox(Text(S::eStrExportSkin), Text(S::eStrExportSkinTip), COptionsData::eExportSkin), 5, 0, 1, 2);
    addIntRow(vertexGrid, 6, S::eStrBoneLimit, S::eStrBoneLimitTip, COptionsData::eBoneLimit, 1, 255);
    vertexGrid->setColumnStretch(1, 1);

    auto* left = new QVBoxLayout;
    left->addLayout(primitive);
    left->addWidget(triangles);
    left->addWidget(vertices);
    left->addStretch(1);
    auto* columns = new QHBoxLayout(geometry);
    columns->addLayout(left);
    columns->addWidget(buildVertexFormatGroup(), 1);

    auto* layout = new QVBoxLayout;
    layout->addWidget(geometry);
    return Page(layout);
}

QWidget* COptionsWidget::buildVertexFormatGroup()
{
    auto* group = new QGroupBox;
    auto* layout = new QVBoxLayout(group);
    layout->setSpacing(2);
    auto* header = new QHBoxLayout;
    auto* vectorHeader = new QLabel("<b>" + Text(S::eStrVector) + "</b>");
    auto* typeHeader = new QLabel("<b>" + Text(S::eStrDataType) + "</b>");
    header->addWidget(vectorHeader);
    header->addWidget(typeHeader);
    header->addStretch(1);
    layout->addLayout(header);
    int captionWidth = 0;
    for (int i = 0; i < COptionsData::eNumVectorFormats; ++i)
    {
        auto* row = new CVectorFormatWidget(static_cast<COptionsData::EVectorFormats>(i));
        connect(row, &CVectorFormatWidget::vectorOptChanged, this, &COptionsWidget::onDataTypeChanged);
        captionWidth = std::max(captionWidth, row->captionWidthHint());
        m_vectorRows.append(row);
        layout->addWidget(row);
    }
    for (CVectorFormatWidget* row : m_vectorRows)
        row->setCaptionWidth(captionWidth);
    // The headers sit over the caption and type columns of the rows.
    vectorHeader->setFixedWidth(captionWidth + header->spacing());
    header->setContentsMargins(0, 0, 0, 2);
    m_pUnpackMatrix = boolBox(Text(S::eStrAddUnpackMatrix), Text(S::eStrAddUnpackMatrixTip), COptionsData::eUnpackMatrix);
    layout->addSpacing(6);
    layout->addWidget(new QLabel("<b>" + Text(S::eStrImprovePositionPrecision) + "</b>"));
    layout->addWidget(m_pUnpackMatrix);
    layout->addStretch(1);
    return group;
}

QWidget* COptionsWidget::buildMaterialsTab()
{
    QGroupBox* materials = boolGroup(S::eStrExportMaterials, S::eStrExportMaterialsTip, COptionsData::eExportMaterials);
    auto* inner = new QVBoxLayout(materials);
    inner->addWidget(boolBox(Text(S::eStrExportMappingChannels), Text(S::eStrExportMappingChannelsTip),
                             COptionsData::eExportMappingChannels));
    inner->addWidget(boolBox(Text(S::eStrFlipV), Text(S::eStrFlipVTip), COptionsData::eFlipTextureV));
    inner->addWidget(boolBox(Text(S::eStrInvertTransparency), Text(S::eStrInvertTransparencyTip), COptionsData::eInvertTransparency));

    QGroupBox* merge = boolGroup(S::eStrMerge, S::eStrMergeTip, COptionsData::eMerge);
    auto* mergeGrid = new QGridLayout(merge);
    addStringRow(mergeGrid, 0, S::eStrMergeSource, S::eStrMergeTip, COptionsData::eMergeSrc, S::eStrFilterVeldraBinary);

    auto* layout = new QVBoxLayout;
    layout->addWidget(materials);
    layout->addWidget(merge);
    layout->addStretch(1);
    return Page(layout);
}

QWidget* COptionsWidget::buildTransformationsTab()
{
    auto* animation = new QGroupBox(Text(S::eStrTransformations));
    auto* grid = new QGridLayout(animation);
    grid->addWidget(boolBox(Text(S::eStrExportAnimations), Text(S::eStrExportAnimationsTip), COptionsData::eExportAnimations), 0, 0,
                    1, 2);
    grid->addWidget(boolBox(Text(S::eStrIndexAnimations), Text(S::eStrIndexAnimationsTip), COptionsData::eIndexAnimations), 1, 0, 1,
                    2);
    grid->addWidget(boolBox(Text(S::eStrExportMatrices), Text(S::eStrExportMatricesTip), COptionsData::eExportMatrices), 2, 0, 1, 2);
    grid->addWidget(boolBox(CCommonGUIStrings::QtText(CCommonGUIStrings::eStrExportBoneGeometry),
                            CCommonGUIStrings::QtText(CCommonGUIStrings::eStrExportBoneGeometryTip), COptionsData::eExportBoneGeometry),
                    3, 0, 1, 2);

    m_pSpace = choiceList(-1);
    m_pSpace->addItem(Text(S::eStrModelSpace));
    m_pSpace->addItem(Text(S::eStrWorldSpace));
    connect(m_pSpace, qOverload<int>(&QComboBox::activated), this, &COptionsWidget::onSpaceSelected);
    grid->addWidget(m_pSpace, 4, 0, 1, 2);
    addIntRow(grid, 5, S::eStrStaticFrame, S::eStrStaticFrameTip, COptionsData::eStaticFrame, 0, 100000);

    m_pCoordSystem = choiceList(-1);
    m_pCoordSystem->addItem(Text(S::eStrOpenGL), static_cast<uint>(eCoordSystemOpenGL));
    m_pCoordSystem->addItem(Text(S::eStrDirectX), static_cast<uint>(eCoordSystemDirectX));
    connect(m_pCoordSystem, qOverload<int>(&QComboBox::activated), this, &COptionsWidget::onCSSelected);
    grid->addWidget(new QLabel(Text(S::eStrCoordSystem)), 6, 0);
    grid->addWidget(m_pCoordSystem, 6, 1);
    grid->setColumnStretch(2, 1);

    auto* layout = new QVBoxLayout;
    layout->addWidget(animation);
    layout->addStretch(1);
    return Page(layout);
}

QWidget* COptionsWidget::buildUserOptionsTab()
{
    QGroupBox* userData = boolGroup(S::eStrExportUserData, S::eStrExportUserDataTip, COptionsData::eExportUserData);
    auto* userGrid = new QGridLayout(userData);
    addStringRow(userGrid, 0, S::eStrMelFile, S::eStrMelFileTip, COptionsData::eScriptFile, S::eStrFilterMel);

    QGroupBox* post = boolGroup(S::eStrPostExportCL, S::eStrPostTargetTip, COptionsData::eUsePostExportCL);
    auto* postGrid = new QGridLayout(post);
    addStringRow(postGrid, 0, S::eStrPostTarget, S::eStrPostTargetTip, COptionsData::eClPostTarget, S::eStrFilterExe);
    addStringRow(postGrid, 1, S::eStrPostArgs, S::eStrPostArgsTip, COptionsData::eClPostArgs, -1);
    addStringRow(postGrid, 2, S::eStrPostCWD, S::eStrPostCWDTip, COptionsData::eClPostCWD, -1, true);
    // The arguments are plain text: no chooser.
    for (QWidget* companion : m_companions.values(control("string_option_enum", COptionsData::eClPostArgs)))
        if (qobject_cast<QPushButton*>(companion))
            companion->hide();

    QGroupBox* viewer = boolGroup(S::eStrOpenInViewer, S::eStrOpenInViewerTip, COptionsData::eDisplayInDravik);
    auto* viewerGrid = new QGridLayout(viewer);
    addStringRow(viewerGrid, 0, S::eStrViewerPath, S::eStrOpenInViewerTip, COptionsData::ePathToDravik, S::eStrFilterExe);

    auto* layout = new QVBoxLayout;
    layout->addWidget(userData);
    layout->addWidget(post);
    layout->addWidget(viewer);
    layout->addStretch(1);
    return Page(layout);
}
