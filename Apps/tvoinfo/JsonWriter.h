// A small streaming JSON writer: objects, arrays, strings, numbers and booleans, with commas and
// indentation handled. Strings are escaped; bytes that are not valid UTF-8 are written as the
// characters U+0080 to U+00FF, and floats that are not finite as null, so the output always parses.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class CJsonWriter
{
  public:
    // Members of an object take a key; elements of an array pass key = nullptr.
    void BeginObject(const char* key = nullptr);
    void EndObject();
    void BeginArray(const char* key = nullptr);
    void EndArray();
    void String(const char* key, const char* value); // null value writes null
    void Int(const char* key, int64_t value);
    void Float(const char* key, float value);
    void Bool(const char* key, bool value);
    void Null(const char* key);

    const std::string& Text() const { return m_text; }

  private:
    void Key(const char* key);
    void Quoted(const char* s);

    std::string m_text;
    std::vector<bool> m_first; // per open container: no member written yet
};
