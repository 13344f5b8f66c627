// The raw block tree of a .tvo file: one line a block with its offset, tag, name and length,
// containers indented over their children. Leaf end markers are not listed; any other stray end
// marker is. Returns false when the blocks run past the end of the data (the source then holds
// the error).
#pragma once

#include <string>

class CSource;

bool TVOBlockTree(CSource& source, std::string& out);
