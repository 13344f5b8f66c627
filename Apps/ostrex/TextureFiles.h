// Finding the file a material's texture name means. glTF names its files by URI, so a space is
// "%20" and "ü" is "%C3%BC"; other formats name files literally, where '%' is an ordinary letter.
// The name is taken as written when that file exists, else percent-decoded when that one exists.
#pragma once

#include <string>

// The name with every "%XX" (two hex digits) replaced by its byte; other text unchanged.
std::string PercentDecoded(const std::string& name);

// The path of the file the texture name means, resolved against folder when relative (folder may
// be empty for the working folder), or empty when neither reading of the name exists as a file.
std::string ExistingTextureFile(const std::string& folder, const std::string& name);
