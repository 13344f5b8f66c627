// Hand assembly of .tvo bytes for tests: blocks are spelt out word by word, independently of the
// library's writer.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace tvotest
{
class CBytes
{
  public:
    std::vector<uint8_t> b;

    CBytes& U32(uint32_t v)
    {
        for (int i = 0; i < 4; ++i)
            b.push_back(static_cast<uint8_t>(v >> (8 * i)));
        return *this;
    }
    CBytes& F32(float f)
    {
        uint32_t v;
        std::memcpy(&v, &f, 4);
        return U32(v);
    }
    CBytes& Raw(const void* p, size_t n)
    {
        const uint8_t* q = static_cast<const uint8_t*>(p);
        b.insert(b.end(), q, q + n);
        return *this;
    }
    CBytes& Begin(uint32_t tag) { return U32(tag).U32(0); }
    CBytes& End(uint32_t tag) { return U32(tag | 0x80000000u).U32(0); }
    CBytes& Leaf(uint32_t tag, const void* p, uint32_t n) { return U32(tag).U32(n).Raw(p, n).End(tag); }
    CBytes& LeafU32(uint32_t tag, uint32_t v) { return U32(tag).U32(4).U32(v).End(tag); }
    CBytes& LeafStr(uint32_t tag, const std::string& s)
    {
        return Leaf(tag, s.c_str(), static_cast<uint32_t>(s.size() + 1));
    }
    CBytes& Version() { return LeafStr(1000, "AB.TVO.2.0"); }
    CBytes& Append(const CBytes& other)
    {
        b.insert(b.end(), other.b.begin(), other.b.end());
        return *this;
    }
    uint32_t Size() const { return static_cast<uint32_t>(b.size()); }
    const uint8_t* Data() const { return b.data(); }
};
} // namespace tvotest
