// Build-time generator: exports one small scene as a binary file, a header and a source file into
// the directory named on the command line, for the test that compiles the generated source.
#include <cstdio>
#include <string>

#include "SceneFixtures.h"
#include "TVO.h"

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::fprintf(stderr, "usage: %s <output directory>\n", argv[0]);
        return 2;
    }
    const std::string dir = argv[1];

    SContent content;
    content.info.endFrame = 4;
    CNode cube = MeshNode("Crate", CubeGeometry(0, 1));
    for (int f = 0; f < 5; ++f)
    {
        SNodeTM t;
        t.pos[1] = static_cast<float>(f);
        cube.frames.push_back(t);
    }
    content.AddNode(cube);
    CNode lamp;
    lamp.name = "Lamp";
    lamp.type = eNodeLight;
    lamp.tm.pos[2] = 5.0f;
    lamp.light.colour[0] = 1.0f;
    content.AddNode(lamp);
    SMaterial a, b;
    a.name = "planks";
    a.opacity = 1.0f;
    a.textures[0] = "planks.png";
    b.name = "glass";
    b.opacity = 0.25f;
    content.materials = {a, b};

    COptions options;
    options.SetOption(COptionsData::eExportAnimations, true);
    CTVO tvo;
    if (!tvo.Process(content, options))
        return 1;
    const char* history = "generated for the embedded-scene test";
    options.SetOption(COptionsData::eExpFormat, eExportFormatBinary);
    if (!tvo.Write((dir + "/GenSceneBinary.tvo").c_str(), options, history, false))
        return 1;
    options.SetOption(COptionsData::eExpFormat, eExportFormatHeader);
    if (!tvo.Write((dir + "/GenScene.h").c_str(), options, history, false))
        return 1;
    options.SetOption(COptionsData::eExpFormat, eExportFormatSource);
    if (!tvo.Write((dir + "/GenSceneSrc.cpp").c_str(), options, history, false))
        return 1;
    return 0;
}
