// Text forms of preference values: decimal integers and reals independent of the C locale, and
// Base64 for binary data (libb64). Internal to the preferences store.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

std::string QMXPrefFormatInt(int value);
// The shortest decimal text that reads back to exactly the same double.
std::string QMXPrefFormatReal(double value);
// The whole text (surrounding white space allowed) must be one number in range.
bool QMXPrefParseInt(const char* text, int& value);
bool QMXPrefParseReal(const char* text, double& value);

// Base64 on one line (no line breaks).
std::string QMXPrefBase64Encode(const void* data, uint32_t length);
// Characters outside the Base64 alphabet (line breaks, spaces) are skipped.
std::vector<uint8_t> QMXPrefBase64Decode(const char* text);

// Makes text valid UTF-8 in place: every byte that does not belong to a well-formed sequence is
// taken as a Latin-1 character and re-encoded. Valid text is left as it is. TinyXML reads invalid
// sequences differently from how it writes them back, so the store only parses valid text.
void QMXPrefRepairUtf8(std::string& text);
