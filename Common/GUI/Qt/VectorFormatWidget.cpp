#include "VectorFormatWidget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QSignalBlocker>

#include "OptionsTables.h"
#include "OstrexStrings.h"

CVectorFormatWidget::CVectorFormatWidget(COptionsData::EVectorFormats format, QWidget* parent)
    : QWidget(parent), m_eFormat(format),
      m_pEnable(new QCheckBox(COstrexStrings::QtText(VectorFormatText(format)), this)),
      m_pType(new QComboBox(this))
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pEnable);
    for (const SDataTypeRow& row : g_dataTypeRows)
        m_pType->addItem(COstrexStrings::QtText(row.iText), static_cast<uint>(row.eType));
    layout->addWidget(m_pType);
    for (int i = 0; i < kComponents; ++i)
    {
        m_pComponents[i] = new QCheckBox(COstrexStrings::QtText(COstrexStrings::eStrA0 + i), this);
        m_pComponents[i]->setProperty("i32Mask", 1 << i);
        QSizePolicy policy = m_pComponents[i]->sizePolicy();
        policy.setRetainSizeWhenHidden(true);
        m_pComponents[i]->setSizePolicy(policy);
        layout->addWidget(m_pComponents[i]);
        connect(m_pComponents[i], &QCheckBox::stateChanged, this, &CVectorFormatWidget::onCheckBoxStateChanged);
    }
    layout->addStretch(1);
    connect(m_pEnable, &QCheckBox::stateChanged, this, &CVectorFormatWidget::onCheckBoxStateChanged);
    connect(m_pType, qOverload<int>(&QComboBox::activated), this, &CVectorFormatWidget::onTypeSelected);
    setVectorOpt(CVectorOpt());
}

void CVectorFormatWidget::setVectorOpt(const CVectorOpt& value)
{
    m_value = value;
    const QSignalBlocker blockEnable(m_pEnable);
    const QSignalBlocker blockType(m_pType);
    m_pEnable->setChecked(value.GetOption(CVectorOpt::eExport));
    m_pType->setCurrentIndex(DataTypeRowOf(value.GetOption(CVectorOpt::eDataType)));
    const uint32_t mask = value.GetOption(CVectorOpt::eEnable);
    for (QCheckBox* box : m_pComponents)
    {
        const QSignalBlocker block(box);
        box->setChecked(mask & box->property("i32Mask").toUInt());
    }
    applyEnableMasks();
}

void CVectorFormatWidget::setCaptionWidth(int width)
{
    m_pEnable->setFixedWidth(width);
}

int CVectorFormatWidget::captionWidthHint() const
{
    return m_pEnable->sizeHint().width();
}

void CVectorFormatWidget::onTypeSelected(int row)
{
    if (row < 0)
        return;
    m_value.SetOption(CVectorOpt::eDataType, static_cast<EQMXTDataType>(m_pType->itemData(row).toUInt()));
    emit vectorOptChanged(m_eFormat, m_value);
}

void CVectorFormatWidget::onCheckBoxStateChanged(int state)
{
    auto* box = qobject_cast<QCheckBox*>(sender());
    if (!box)
        return;
    if (box == m_pEnable)
        m_value.SetOption(CVectorOpt::eExport, state != Qt::Unchecked);
    else
    {
        const uint32_t bit = box->property("i32Mask").toUInt();
        uint32_t mask = m_value.GetOption(CVectorOpt::eEnable);
        mask = state != Qt::Unchecked ? (mask | bit) : (mask & ~bit);
        m_value.SetOption(CVectorOpt::eEnable, mask);
    }
    applyEnableMasks();
    emit vectorOptChanged(m_eFormat, m_value);
}

void CVectorFormatWidget::applyEnableMasks()
{
    const bool exported = m_value.GetOption(CVectorOpt::eExport);
    const bool hideLast = m_value.GetOption(CVectorOpt::eEnable) & CVectorOpt::eMaskHideLast;
    m_pType->setEnabled(exported);
    for (int i = 0; i < kComponents; ++i)
        m_pComponents[i]->setEnabled(exported && !(hideLast && i == kComponents - 1));
    m_pComponents[kComponents - 1]->setVisible(!hideLast);
}
