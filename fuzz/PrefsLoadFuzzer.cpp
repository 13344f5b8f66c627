// Feeds arbitrary bytes to the preferences store as the content of its file, through a platform
// part that keeps the file in memory. Besides the sanitizers' checks it asserts that any content
// loads (a broken file is replaced by the recreated skeleton), that lookups and a set work on what
// was loaded, and that what a save writes loads again without anything being recreated and with the
// value that was set.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "QMXPreferences.h"

namespace
{
void Check(bool condition)
{
    if (!condition)
        std::abort();
}

class CMemoryFile : public CQMXPreferencesImpl
{
  public:
    std::string m_sContent;
    std::string m_sWritten;

    CQMXTString GetPreferenceFilePath(const char*, EPreferenceType) override { return "memory.plist"; }
    bool OpenPreferenceFile(SQMXPrefFile& file, const char*, EQMXPrefFileMode mode, EPreferenceType, bool) override
    {
        file = SQMXPrefFile();
        file.sRealPath = "memory.plist";
        if (mode == eQMXPrefRead)
            file.pFile = m_sContent.empty() ? std::fopen("/dev/null", "rb")
                                            : fmemopen(&m_sContent[0], m_sContent.size(), "rb");
        else
            file.pFile = open_memstream(&m_pBuffer, &m_uiSize);
        m_bWriting = mode == eQMXPrefWrite;
        return file.pFile != nullptr;
    }
    bool CloseFile(SQMXPrefFile& file, bool commit) override
    {
        const bool ok = std::fclose(file.pFile) == 0;
        file.pFile = nullptr;
        if (m_bWriting)
        {
            if (commit && ok)
                m_sWritten.assign(m_pBuffer, m_uiSize);
            std::free(m_pBuffer);
            m_pBuffer = nullptr;
        }
        return ok;
    }
    bool LastModificationTimeHash(const char*, EPreferenceType, CQMXTHash& hash) override
    {
        hash.MakeHash(m_sContent.data(), 1, m_sContent.size());
        return true;
    }
    bool Lock(const char*, EPreferenceType) override { return true; }
    void Unlock() override {}
    CQMXTString GetHomeDirectory() override { return ""; }

  private:
    char* m_pBuffer = nullptr;
    size_t m_uiSize = 0;
    bool m_bWriting = false;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    auto owned = std::make_unique<CMemoryFile>();
    CMemoryFile* file = owned.get();
    file->m_sContent.assign(reinterpret_cast<const char*>(data), size);
    CQMXPreferences prefs("fuzz", ePreferenceUser, std::move(owned));
    CQMXTString errors;
    Check(prefs.Load(errors, false));

    CQMXTString first;
    if (prefs.GetFirstKey("", first) == eQMXPrefSuccess)
    {
        int number = 0;
        prefs.GetValue(first.c_str(), number, 0);
        std::vector<CQMXTString> texts;
        prefs.GetValue(first.c_str(), texts);
        uint8_t* bytes = nullptr;
        uint32_t length = 0;
        prefs.GetValue(first.c_str(), bytes, length);
        std::free(bytes);
        CQMXTString inner;
        prefs.GetFirstKey(first.c_str(), inner);
    }
    const int set = prefs.SetValue("Fuzz/Value", 1);
    Check(set == eQMXPrefSuccess || set == eQMXPrefIncorrectType);
    Check(prefs.Save(true));

    // What was written loads again with nothing recreated.
    file->m_sContent = file->m_sWritten;
    CQMXTString again;
    Check(prefs.Load(again, false));
    Check(std::strstr(again.c_str(), "WARNING") == nullptr);
    int value = 0;
    Check(set != eQMXPrefSuccess || (prefs.GetValue("Fuzz/Value", value) == eQMXPrefSuccess && value == 1));
    return 0;
}
