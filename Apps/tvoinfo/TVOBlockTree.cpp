#include "TVOBlockTree.h"

#include <cstdio>

#include "QMXTSource.h"
#include "QMXTTVOBlocks.h"

namespace
{
void Line(std::string& out, uint32_t offset, int depth, uint32_t tag, const char* what, uint32_t length,
          bool container)
{
    char text[192];
    const uint32_t id = tag & ~static_cast<uint32_t>(eTVOEndBit);
    if (container)
        std::snprintf(text, sizeof text, "%10u  %*s%u %s%s\n", offset, 2 * depth, "", id, what,
                      QMXTTVOBlockName(id));
    else
        std::snprintf(text, sizeof text, "%10u  %*s%u %s%s, %u bytes\n", offset, 2 * depth, "", id, what,
                      QMXTTVOBlockName(id), length);
    out += text;
}

// The blocks inside parent (0: the whole file) up to its end marker, or the end of the data at the top.
bool Children(CSource& src, uint32_t parent, int depth, std::string& out)
{
    uint32_t lastLeaf = 0;
    for (;;)
    {
        if (parent == 0 && src.Remaining() == 0)
            return true;
        const uint32_t offset = src.Position();
        uint32_t tag, length;
        if (!src.ReadMarker(tag, length))
            return false;
        if (parent && tag == (parent | eTVOEndBit))
            return true;
        if (tag & eTVOEndBit)
        {
            if (tag != (lastLeaf | eTVOEndBit) || length != 0)
                Line(out, offset, depth, tag, "end of ", length, false);
            lastLeaf = 0;
            if (!src.Skip(length))
                return false;
            continue;
        }
        if (QMXTTVOIsContainer(parent, tag))
        {
            Line(out, offset, depth, tag, "", length, true);
            src.EnterBlock();
            if (!Children(src, tag, depth + 1, out))
                return false;
            src.LeaveBlock();
            lastLeaf = 0;
            continue;
        }
        Line(out, offset, depth, tag, "", length, false);
        lastLeaf = tag;
        if (!src.Skip(length))
            return false;
    }
}
} // namespace

bool TVOBlockTree(CSource& source, std::string& out)
{
    out += "    offset  block\n";
    return Children(source, 0, 0, out);
}
