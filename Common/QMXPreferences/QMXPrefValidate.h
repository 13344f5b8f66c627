// Checks a parsed property-list document and rebuilds its skeleton where it is missing: the XML
// declaration, the <plist> root and its top-level <dict> are recreated with a warning; every dict
// and array is then checked for key/value pairing. Messages are appended to messages; each
// recreation warning is preceded by sourceName and a newline. Recreating marks nothing dirty.
// Returns false when an element could not be recreated or the pairing check found an error.
// Cost: one walk over the document.
#pragma once

#include "QMXTString.h"

class TiXmlDocument;

bool QMXPrefValidate(TiXmlDocument& doc, const char* sourceName, CQMXTString& messages);
