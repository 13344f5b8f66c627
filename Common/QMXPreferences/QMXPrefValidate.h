// Checks a parsed property-list document and rebuilds its skeleton where it is missing: the XML
// declaration, the <plist> root and its top-level <dict> are recreated with a warning; every dict
// and array is then checked for key/value pairing. A declaration whose values are more than letters,
// digits, ".", "_" and "-" is replaced by the standard one without a message, since TinyXML would
// write it back unescaped. Damaged content is brought into a form that reads back as it is written:
// inside the top-level dict, dicts and arrays keep only elements and comments, and every other
// element keeps only its leading text. Messages are appended to messages; each
// recreation warning is preceded by sourceName and a newline. Recreating marks nothing dirty.
// Returns false when an element could not be recreated or the pairing check found an error.
// Cost: one walk over the document.
#pragma once

#include "QMXTString.h"

class TiXmlDocument;

bool QMXPrefValidate(TiXmlDocument& doc, const char* sourceName, CQMXTString& messages);
