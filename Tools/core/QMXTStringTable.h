// A per-language table of texts looked up by index, as the builder's and the windows' message
// tables keep them: every text of every language lies in one read-only block of consecutive
// zero-terminated strings, entry Count x language + index. Initialise finds the texts in the block
// (QMXTStringBlockOffsets: a text missing at the end of the block reads empty); the owner calls it
// on first use. The table holds no heap memory and is constant-initialised, so a static table is
// ready before any other static code can ask it for a text.
// Cost: Initialise O(block size); every lookup constant.
#pragma once

#include <cstddef>
#include <cstdint>

#include "QMXTString.h"

template <int Count, int Languages = 1> class CQMXTStringTable
{
  public:
    // block (size bytes) and languageNames (Languages entries, or null) must outlive the table.
    constexpr CQMXTStringTable(const char* block, size_t size, const char* const* languageNames = nullptr)
        : m_pBlock(block), m_nSize(size), m_ppLanguageNames(languageNames)
    {
    }

    // Finds every text in the block and selects the language.
    void Initialise(int language)
    {
        uint32_t offsets[kEntries];
        QMXTStringBlockOffsets(m_pBlock, m_nSize, offsets, kEntries);
        for (int i = 0; i < kEntries; ++i)
            m_texts[i] = m_pBlock + offsets[i];
        SetLanguage(language);
        m_bInitialised = true;
    }
    bool IsInitialised() const { return m_bInitialised; }

    // A language out of range leaves the current one.
    void SetLanguage(int language)
    {
        if (language >= 0 && language < Languages)
            m_nLanguage = language;
    }
    // The language's name; "" out of range or without names.
    const char* LanguageName(int language) const
    {
        return m_ppLanguageNames && language >= 0 && language < Languages ? m_ppLanguageNames[language] : "";
    }

    // Entry of text n in the current language (0 to Count x Languages - 1); -1 for n out of range.
    int Entry(int n) const { return n >= 0 && n < Count ? Count * m_nLanguage + n : -1; }
    // The text at an entry (after Initialise).
    const char* At(int entry) const { return m_texts[entry]; }
    // Text n in the current language (after Initialise); "" for n out of range.
    const char* Text(int n) const
    {
        const int entry = Entry(n);
        return entry < 0 ? "" : m_texts[entry];
    }

    static constexpr int kEntries = Count * Languages;

  private:
    const char* m_pBlock;
    size_t m_nSize;
    const char* const* m_ppLanguageNames;
    const char* m_texts[kEntries] = {};
    int m_nLanguage = 0;
    bool m_bInitialised = false;
};
