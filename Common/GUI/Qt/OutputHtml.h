// How a message of the output log looks: the colour type of each log level and the rich text a
// message is wrapped in. Kept free of widgets so the mapping can be checked on its own.
#pragma once

#include <QString>

// Message colour in the output log.
enum EOutputType : int
{
    eOutputBlack = 0,
    eOutputChocolate = 1,
    eOutputRedBold = 2,
    eOutputDarkGreen = 3
};

// Level 0 (success) dark green, 1 (information) black, 2 (warning) chocolate, 3 (error) red and
// bold. False for every other level (such as 4, detail): the log shows nothing for it.
bool OutputTypeForLevel(int level, EOutputType& type);

// The paragraph appended for a message. The text is inserted unescaped: callers may embed markup.
QString OutputHtml(const QString& text, EOutputType type);
