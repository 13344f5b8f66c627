#include "OutputHtml.h"

bool OutputTypeForLevel(int level, EOutputType& type)
{
    switch (level)
    {
    case 0: type = eOutputDarkGreen; return true;
    case 1: type = eOutputBlack; return true;
    case 2: type = eOutputChocolate; return true;
    case 3: type = eOutputRedBold; return true;
    default: return false;
    }
}

QString OutputHtml(const QString& text, EOutputType type)
{
    switch (type)
    {
    case eOutputRedBold: return "<font color=\"red\"><b>" + text + "</b>" + "</font>";
    case eOutputDarkGreen: return "<font color=\"Dark Green\">" + text + "</font>";
    case eOutputChocolate: return "<font color=\"Chocolate\">" + text + "</font>";
    default: return "<font color=\"Black\">" + text + "</font>";
    }
}
