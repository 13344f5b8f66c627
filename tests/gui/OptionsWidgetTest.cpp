#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QMimeData>
#include <QSet>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

#include "GuiTests.h"
#include "OptionsWidget.h"
#include "VectorFormatWidget.h"

using O = COptionsData;

namespace
{
struct SBoundOption
{
    const char* property;
    int index;
};

// The value a control shows, as text.
QString ControlValue(QWidget* control)
{
    if (auto* box = qobject_cast<QCheckBox*>(control))
        return box->isChecked() ? "1" : "0";
    if (auto* group = qobject_cast<QGroupBox*>(control))
        return group->isChecked() ? "1" : "0";
    if (auto* spin = qobject_cast<QSpinBox*>(control))
        return QString::number(spin->value());
    if (auto* real = qobject_cast<QDoubleSpinBox*>(control))
        return QString::number(real->value());
    return qobject_cast<QLineEdit*>(control)->text();
}

// Changes the control to another value, as a user would (disabled controls included).
void ChangeControl(QWidget* control)
{
    if (auto* box = qobject_cast<QCheckBox*>(control))
        box->setChecked(!box->isChecked());
    else if (auto* group = qobject_cast<QGroupBox*>(control))
        group->setChecked(!group->isChecked());
    else if (auto* spin = qobject_cast<QSpinBox*>(control))
        spin->setValue(spin->value() == spin->minimum() ? spin->minimum() + 1 : spin->minimum());
    else if (auto* real = qobject_cast<QDoubleSpinBox*>(control))
        real->setValue(real->value() == 0.25 ? -0.5 : 0.25);
    else if (auto* edit = qobject_cast<QLineEdit*>(control))
        edit->setText(edit->text() + "x y");
}

SBoundOption BoundOption(QWidget* control)
{
    for (const char* property :
         {"bool_option_enum", "int_option_enum", "float_option_enum", "string_option_enum"})
        if (control->property(property).isValid())
            return {property, control->property(property).toInt()};
    return {"", -1};
}

// The option a control edits, as text, read from the record.
QString OptionValue(const COptionsData& o, const SBoundOption& bound)
{
    const QByteArray kind(bound.property);
    if (kind == "bool_option_enum")
        return o.GetOption(static_cast<O::EBools>(bound.index)) ? "1" : "0";
    if (kind == "int_option_enum")
        return QString::number(o.GetOption(static_cast<O::EInts>(bound.index)));
    if (kind == "float_option_enum")
        return QString::number(o.GetOption(static_cast<O::EFloats>(bound.index)));
    return QString::fromUtf8(o.GetOption(static_cast<O::EStrings>(bound.index)).c_str());
}
} // namespace

void CGuiTest::everyControlRoundTripsItsOption()
{
    COptions edited;
    COptions defaults;
    COptionsWidget widget;
    widget.Init(edited);
    QSet<QString> covered;
    for (QWidget* control : widget.optionControls())
    {
        const SBoundOption bound = BoundOption(control);
        const QString name = QString("%1:%2").arg(bound.property).arg(bound.index);
        covered.insert(name);
        const QString before = ControlValue(control);
        ChangeControl(control);
        const QString after = ControlValue(control);
        QVERIFY2(after != before, qPrintable(name));
        QCOMPARE(OptionValue(edited, bound), after);
        widget.Init(defaults);
        QCOMPARE(ControlValue(control), OptionValue(defaults, bound));
        widget.Init(edited);
        QCOMPARE(ControlValue(control), after);
    }
    // Every plain option has a control, except bIndexed and bExportModelSpace (choice lists) and
    // uiPadDataTo (follows the alignment).
    QCOMPARE(covered.size(), O::eNumBools - 2 + O::eNumInts - 1 + O::eNumFloats + O::eNumStrings);
    QVERIFY(!covered.contains(QString("bool_option_enum:%1").arg(O::eIndexed)));
    QVERIFY(!covered.contains(QString("int_option_enum:%1").arg(O::ePadDataTo)));
}

void CGuiTest::choiceLists_data()
{
    QTest::addColumn<bool>("sorting"); // the sorting list (custom settings, strips), or the primitive list
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("written"); // lines of the options text after the choice
    QTest::newRow("Triangle list") << false << 0 << "ePrimType=0\nbIndexed=0\neTriSort=1\nbSortVertices=0";
    QTest::newRow("Indexed triangle list")
        << false << 1 << "ePrimType=0\nbIndexed=1\neTriSort=1\nbSortVertices=1";
    QTest::newRow("Triangle strips") << false << 2 << "ePrimType=1\nbIndexed=0\neTriSort=3\nbSortVertices=0";
    QTest::newRow("Indexed triangle strips")
        << false << 3 << "ePrimType=1\nbIndexed=1\neTriSort=3\nbSortVertices=1";
    QTest::newRow("None") << true << 0 << "eTriSort=0";
    QTest::newRow("QMXTGeometrySort") << true << 1 << "eTriSort=1";
    QTest::newRow("D3DX") << true << 2 << "eTriSort=2";
    QTest::newRow("QMXTTriStrip") << true << 3 << "eTriSort=3";
}

void CGuiTest::choiceLists()
{
    QFETCH(bool, sorting);
    QFETCH(int, row);
    QFETCH(QString, written);
    COptions options;
    options.SetOption(O::eUseCustomOptSettings, sorting);
    options.SetOption(O::ePrimType, sorting ? ePrimTriangleStrips : ePrimTriangleList);
    COptionsWidget widget;
    widget.Init(options);
    QSignalSpy changed(&widget, &COptionsWidget::optionsChanged);
    QComboBox* list = sorting ? widget.sortingMethodList() : widget.primitiveTypeList();
    QVERIFY(list->isEnabled());
    QCOMPARE(list->itemText(row), QString(QTest::currentDataTag()));
    list->setCurrentIndex(row);
    emit list->activated(row);
    QCOMPARE(changed.count(), 1);
    const QString text = "\n" + QString(options.ToString().c_str());
    for (const QString& line : written.split('\n'))
        QVERIFY2(text.contains("\n" + line + "\n"), qPrintable(line));
    // Without custom settings the recommended sort follows the primitive type on screen too.
    QCOMPARE(widget.sortingMethodList()->currentIndex(), static_cast<int>(options.GetOption(O::eTriSort)));
}

namespace
{
QWidget* FindControl(const COptionsWidget& widget, const char* property, int index)
{
    for (QWidget* control : widget.optionControls())
        if (control->property(property).isValid() && control->property(property).toInt() == index)
            return control;
    return nullptr;
}
} // namespace

void CGuiTest::controlsFollowTheirGoverningOption_data()
{
    QTest::addColumn<int>("governing");
    QTest::addColumn<QByteArray>("property"); // empty: a vertex-format row
    QTest::addColumn<int>("index");
    QTest::newRow("vertex splitting") << int(O::eTangentSpace) << QByteArray("float_option_enum") << 0;
    QTest::newRow("tangent row") << int(O::eTangentSpace) << QByteArray() << int(O::eVcOptTan);
    QTest::newRow("palette size") << int(O::eExportSkin) << QByteArray("int_option_enum")
                                  << int(O::eBoneLimit);
    QTest::newRow("UVW 3 row") << int(O::eExportMappingChannels) << QByteArray() << int(O::eVcOptUVW3);
    QTest::newRow("animation index") << int(O::eExportAnimations) << QByteArray("bool_option_enum")
                                     << int(O::eIndexAnimations);
    QTest::newRow("sort vertices") << int(O::eUseCustomOptSettings) << QByteArray("bool_option_enum")
                                   << int(O::eSortVertices);
}

void CGuiTest::controlsFollowTheirGoverningOption()
{
    QFETCH(int, governing);
    QFETCH(QByteArray, property);
    QFETCH(int, index);
    COptions options;
    options.SetOption(static_cast<O::EBools>(governing), false);
    COptionsWidget widget;
    widget.Init(options);
    QWidget* governed =
        property.isEmpty() ? widget.vectorRows()[index] : FindControl(widget, property, index);
    QVERIFY(governed);
    QVERIFY(!governed->isEnabled());
    qobject_cast<QCheckBox*>(FindControl(widget, "bool_option_enum", governing))->click();
    QVERIFY(governed->isEnabled());
}

void CGuiTest::bit7HidesTheLastComponent()
{
    COptions options;
    COptionsWidget widget;
    widget.Init(options);
    widget.resize(1100, 800);
    widget.show();
    CVectorFormatWidget* position = widget.vectorRows()[O::eVcOptPos];
    CVectorFormatWidget* colour = widget.vectorRows()[O::eVcOptCol];
    colour->enableBox()->click();
    QVERIFY(!position->componentBox(3)->isVisible());
    QVERIFY(!position->componentBox(3)->isEnabled());
    QVERIFY(colour->componentBox(3)->isVisible());

    options.SetOption(O::eVcOptPos, CVectorOpt::eEnable, 0x0Fu);
    widget.refreshGUI();
    QVERIFY(position->componentBox(3)->isVisible());
    position->componentBox(1)->click();
    QCOMPARE(options.GetOption(O::eVcOptPos, CVectorOpt::eEnable), 0x0Du);
}

void CGuiTest::alignmentFollowsTheLargestType()
{
    COptions options;
    COptionsWidget widget;
    widget.Init(options);
    QCOMPARE(widget.alignmentBox()->text(), QString("Align vertex data (to 32-bits)"));
    for (int i = 0; i < O::eNumVectorFormats; ++i)
        options.SetOption(static_cast<O::EVectorFormats>(i), CVectorOpt::eDataType, EQMXTDataShort);
    widget.refreshGUI();
    QCOMPARE(widget.alignmentBox()->text(), QString("Align vertex data (to 16-bits)"));
    QCOMPARE(options.GetOption(O::ePadDataTo), 2u);
}

void CGuiTest::droppedOptionsFileIsReadWithoutPostExportActions()
{
    QTemporaryDir dir;
    QFile file(dir.filePath("studio.cfg"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("bExportSkin=1\nbUsePostExportCL=1\nsClPostTarget=/bin/rm\nuiBoneLimit=17\n");
    file.close();
    struct CDropTarget : COptionsWidget
    {
        using COptionsWidget::dropEvent;
    };
    COptions options;
    CDropTarget widget;
    widget.Init(options);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(file.fileName())});
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    widget.dropEvent(&drop);
    QVERIFY(options.GetOption(O::eExportSkin));
    QCOMPARE(options.GetOption(O::eBoneLimit), 17u);
    // The file's program settings are not taken.
    QVERIFY(!options.GetOption(O::eUsePostExportCL));
    QCOMPARE(QString(options.GetOption(O::eClPostTarget).c_str()), QString());
}
