#include "OstrexStrings.h"

#include "QMXTStringTable.h"

namespace
{
// Every text of every language, one after the other; the offsets below index into it.
const char g_szBlock[] =
    "A0\0"
    "A1\0"
    "A2\0"
    "A3\0"
    "ARGB\0"
    "Add position unpack matrix\0"
    "Use scale and offset to improve accuracy of 8-bit and 16-bit vector types\0"
    "Align vertex data (to 16-bits)\0"
    "Align vertex data (to 32-bits)\0"
    "Align vertex data (to 8-bits)\0"
    "Pad the vertex data to the shown alignment (calculated based on the largest vector type)\0"
    "Binormal\0"
    "Bone indices\0"
    "Bone weights\0"
    "byte\0"
    "byte, normalised\0"
    "Co-ordinate system\0"
    "DirectX\0"
    "OpenGL\0"
    "Cancel\0"
    "Choose a file\0"
    "Choose a working directory\0"
    "Colour\0"
    "[Current]\0"
    "Current export options\0"
    "D3DCOLOR\0"
    "DEC3N\0"
    "Data Type\0"
    "Default Settings\0"
    "Default export options\0"
    "Delete profile\0"
    "Are you sure you'd like to delete this profile?\0"
    "Name\0"
    "Enter Name\0"
    "Export animations\0"
    "Export node animation arrays\0"
    "Export transformations as matrices\0"
    "Export transformations as matrices\0"
    "Export Geometry\0"
    "Export the meshes - vertex and triangle data\0"
    "Export mapping channels\0"
    "Export mapping channels\0"
    "Export materials\0"
    "Export materials\0"
    "Export skinning data\0"
    "Export bone weights and indices for skinned meshes\0"
    "Export user data\0"
    "Enable the exporting of user data\0"
    "File\0"
    "All types (*.*)\0"
    "All supported formats (*.tvo;*.TVO)\0"
    "All supported formats (*.dae;*.DAE)\0"
    "Config files (*.cfg)\0"
    "Collada files (*.dae;*.DAE)\0"
    "Executable files (*.exe)\0"
    "Executable files (*)\0"
    "Mel files (*.mel)\0"
    "MAXScript files (*.ms)\0"
    "Veldra Geometry files (*.tvo;*.TVO;*.h;*.cpp)\0"
    "Veldra Geometry files [Binary] (*.tvo;*.TVO)\0"
    "Veldra Geometry files [Source] (*.cpp)\0"
    "Veldra Geometry files [Header] (*.h)\0"
    "Normal txt file (*.txt)\0"
    "Exit\0"
    "Export...\0"
    "Open...\0"
    "fixed 16.16\0"
    "Flip V co-ordinate\0"
    "Flip V of texture coordinates\0"
    "float\0"
    "Generate tangent-space\0"
    "Calculate tangents and binormals for vertices; uses mapping channel 0\0"
    "Geometry\0"
    "Options that affect the export of geometry\0"
    "Help\0"
    "About Ostrex\0"
    "Feedback...\0"
    "Ostrex Help\0"
    "TVO Specification\0"
    "Improve position precision\0"
    "Index animation data\0"
    "Index the node animation arrays to potentially reduce the amount data\0"
    "int\0"
    "Interleave vertex data\0"
    "Interleave vertex data: use Array of Structures rather than Structure of Arrays\0"
    "Invert transparency\0"
    "Invert the transparency of the materials\0"
    "MAXScript file\0"
    "MAXScript file to use to add user data to TVO nodes, materials and scene\0"
    "Materials\0"
    "Options that affect the export of materials\0"
    "Matrix palette size\0"
    "Enter how large a palette of bones may be indexed into when rendering - e.g. 9 for OGLES 1.x and for OGLES 2.0 the maximum number of bone matrices supported by your shader\0"
    "Mel file\0"
    "Mel file to use to add user data to TVO nodes, materials and scene\0"
    "Merge .XEF/.QMX\0"
    "Merge texture, effects and blending values from the overwritten or another .tvo file\0"
    "Source .tvo file\0"
    "No\0"
    "Normal\0"
    "OK\0"
    "Open in QMXDravik\0"
    "Open the .tvo file in QMXDravik after exporting\0"
    "Open import file\0"
    "QMXDravik path\0"
    "Position\0"
    "Post-export command-line\0"
    "Command arguments\0"
    "The arguments to pass to 'command'\0"
    "Command\0"
    "The command to run after export\0"
    "Working directory\0"
    "The working directory to run 'command' in.\0"
    "Indexed triangle list\0"
    "Indexed triangle strips\0"
    "Triangle list\0"
    "Triangle strips\0"
    "Primitive Type\0"
    "Profile:\0"
    "Menu\0"
    "Delete\0"
    "Export to file\0"
    "Import from file\0"
    "Rename\0"
    "Save As...\0"
    "Set as\0"
    "Profiles\0"
    "The profiles are saved export options\0"
    "RGBA\0"
    "short\0"
    "short, normalised\0"
    "Sort vertices\0"
    "Sort vertices to improve the performance of a vertex-read memory cache\0"
    "D3DX\0"
    "None\0"
    "QMXTGeometrySort\0"
    "QMXTTriStrip\0"
    "Sorting method\0"
    "Model space\0"
    "World space\0"
    "Static frame\0"
    "Select a frame of animation to use as the base position of all objects when exporting in world space\0"
    "Tangent\0"
    "Transformations\0"
    "Options that affect the export of transformations/animations\0"
    "Triangle data optimisations\0"
    "UBYTE4\0"
    "UVW 0\0"
    "UVW 1\0"
    "UVW 2\0"
    "UVW 3\0"
    "UVW 4\0"
    "UVW 5\0"
    "UVW 6\0"
    "UVW 7\0"
    "unsigned byte\0"
    "unsigned byte, normalised\0"
    "unsigned int\0"
    "unsigned short\0"
    "unsigned short, normalised\0"
    "Use custom optimisation settings\0"
    "Use custom optimisation settings instead of letting Ostrex decide\0"
    "User Options\0"
    "Custom user export options\0"
    "Vector\0"
    "Vertex data optimisations\0"
    "Vertex-splitting\0"
    "Split a vertex if the DP3 of tangents/binormals are below this (range -1..1)\0"
    "Yes";
const char* const g_pszLanguageNames[COstrexStrings::eNumLanguages] = {"British English"};

using CTable = CQMXTStringTable<COstrexStrings::eNumStrings, COstrexStrings::eNumLanguages>;
CTable g_table(g_szBlock, sizeof g_szBlock, g_pszLanguageNames);
QString g_qsTexts[CTable::kEntries]; // the texts as QStrings, made by Initialise

int TableIndex(int n)
{
    if (!g_table.IsInitialised())
        COstrexStrings::Initialise(COstrexStrings::eLangBritishEnglish);
    return g_table.Entry(n);
}
} // namespace

void COstrexStrings::Initialise(ELanguages language)
{
    g_table.Initialise(language);
    for (int i = 0; i < CTable::kEntries; ++i)
        g_qsTexts[i] = QString::fromUtf8(g_table.At(i));
}

void COstrexStrings::SetLanguage(ELanguages language)
{
    g_table.SetLanguage(language);
}

const char* COstrexStrings::LangNameAsCStrText(ELanguages language)
{
    return g_table.LanguageName(language);
}

QString COstrexStrings::LangNameAsQtText(ELanguages language)
{
    return QString::fromUtf8(LangNameAsCStrText(language));
}

const char* COstrexStrings::CStrText(int n)
{
    const int i = TableIndex(n);
    return i < 0 ? "" : g_table.At(i);
}

const QString& COstrexStrings::QtText(int n)
{
    static const QString empty;
    const int i = TableIndex(n);
    return i < 0 ? empty : g_qsTexts[i];
}
