// CVectorFormatWidget: one row of the vertex-format table for one vertex attribute: an enable box
// captioned with the attribute's name, the data-type list and one check box per component (A0..A3).
// Each component box carries the property "i32Mask" with its bit of the attribute's mask. When the
// mask has bit 7 (128) set, the last component box is hidden and disabled; it keeps its width, so
// the columns of all rows stay aligned. The row edits a copy of the attribute's CVectorOpt and
// reports every change with vectorOptChanged.
#pragma once

#include <QWidget>

#include "OptionsData.h"

class QCheckBox;
class QComboBox;

class CVectorFormatWidget : public QWidget
{
    Q_OBJECT
  public:
    static constexpr int kComponents = 4;

    CVectorFormatWidget(COptionsData::EVectorFormats format, QWidget* parent = nullptr);

    // Shows these values without reporting a change.
    void setVectorOpt(const CVectorOpt& value);
    const CVectorOpt& vectorOpt() const { return m_value; }
    COptionsData::EVectorFormats format() const { return m_eFormat; }

    // Gives the enable box this width, so the rows line up in columns.
    void setCaptionWidth(int width);
    int captionWidthHint() const;

    QCheckBox* enableBox() const { return m_pEnable; }
    QComboBox* typeList() const { return m_pType; }
    QCheckBox* componentBox(int i) const { return m_pComponents[i]; }

  signals:
    void vectorOptChanged(COptionsData::EVectorFormats format, const CVectorOpt& value);

  public slots:
    void onTypeSelected(int row);
    void onCheckBoxStateChanged(int state);
    // Hides and disables the last component box when bit 7 is set; enables the type list and the
    // components only while the attribute is exported.
    void applyEnableMasks();

  private:
    COptionsData::EVectorFormats m_eFormat;
    CVectorOpt m_value;
    QCheckBox* m_pEnable;
    QComboBox* m_pType;
    QCheckBox* m_pComponents[kComponents];
};
