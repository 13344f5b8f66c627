// CVectorOpt: the output format of one vertex attribute (position, normal, a UVW set, ...): whether
// it is written, its data type (EQMXTDataType) and its component mask.
//
// Mask bits 0..3 select the components x, y, z, w (u, v, w for texture coordinates); bit 7 (128) is
// a flag the options window reads to hide one control of the attribute's row. The owner
// (COptionsData) limits the mask to what the attribute allows.
#pragma once

#include <cstdint>

#include "QMXTVertexData.h"

class CVectorOpt
{
  public:
    enum EBools
    {
        eExport = 0
    };
    enum EDataTypes
    {
        eDataType = 0
    };
    enum EUnsignedInts
    {
        eEnable = 0
    };
    // Bits of the component mask (eEnable).
    enum EMaskBits : uint32_t
    {
        eMaskX = 0x01,
        eMaskY = 0x02,
        eMaskZ = 0x04,
        eMaskW = 0x08,
        eMaskComponents = 0x0F, // x, y, z, w (u, v, w)
        eMaskHideLast = 0x80    // the options window hides the row's last control
    };

    CVectorOpt() = default;
    CVectorOpt(bool bExport, EQMXTDataType eType, uint32_t nEnable)
        : m_bExport(bExport), m_eType(eType), m_nEnable(nEnable)
    {
    }

    void SetOption(EBools, bool value) { m_bExport = value; }
    bool GetOption(EBools) const { return m_bExport; }
    void SetOption(EDataTypes, EQMXTDataType value) { m_eType = value; }
    EQMXTDataType GetOption(EDataTypes) const { return m_eType; }
    void SetOption(EUnsignedInts, uint32_t value) { m_nEnable = value; }
    uint32_t GetOption(EUnsignedInts) const { return m_nEnable; }

    // One line of the text form after "<key>.": subKey "bExport" (atoi != 0), "eType" or "nEnable"
    // (atoi). eType also takes a type's display name ("float", "DEC3N", case ignored); an id or name
    // that is no vertex data type is refused, so no later stage meets one. False for a refused value
    // or any other subKey; the option is then unchanged.
    bool SetFromString(const char* subKey, const char* value);

    bool operator==(const CVectorOpt& other) const
    {
        return m_bExport == other.m_bExport && m_eType == other.m_eType && m_nEnable == other.m_nEnable;
    }
    bool operator!=(const CVectorOpt& other) const { return !(*this == other); }

  private:
    bool m_bExport = false;
    EQMXTDataType m_eType = EQMXTDataFloat;
    uint32_t m_nEnable = eMaskX | eMaskY | eMaskZ | eMaskHideLast;
};

// True for the ids 1..17 of EQMXTDataType.
bool IsVertexDataType(uint32_t type);
// The id whose display name is name (case ignored), or EQMXTDataNone.
EQMXTDataType VertexDataTypeFromName(const char* name);
// atoi as the text form uses it, without atoi's undefined overflow: leading white space, a sign and
// decimal digits; no digits give 0; values beyond the int range are clamped.
int OptionsAtoi(const char* text);
// The same for an unsigned option: values from -2^31 to 2^32 - 1 are taken (negative ones wrap, as
// atoi followed by a cast would), values beyond are clamped to that range first.
uint32_t OptionsAtou(const char* text);
