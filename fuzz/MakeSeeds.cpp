// Writes the fuzz seed corpus: small scenes that together hold every block of the file.
#include <cstdio>
#include <string>

#include "QMXTModelTVO.h"
#include "TVOTestScenes.h"

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::fprintf(stderr, "usage: tvo_fuzz_seeds DIRECTORY\n");
        return 2;
    }
    const std::string dir = std::string(argv[1]) + "/";
    int failures = 0;
    {
        CQMXTModelTVO s;
        tvotest::MakeRichScene(s);
        failures += s.SaveTVO((dir + "rich.tvo").c_str(), "bOpt=1\n", "exported by the seed maker");
    }
    for (int interleaved = 0; interleaved < 2; ++interleaved)
    {
        CQMXTModelTVO s;
        tvotest::MakeBigScene(s, 5, interleaved != 0);
        failures += s.SaveTVO((dir + (interleaved ? "small-interleaved.tvo" : "small.tvo")).c_str());
    }
    {
        CQMXTModelTVO s;
        s.InitImpl();
        failures += s.SaveTVO((dir + "empty.tvo").c_str(), "x=1\n", nullptr);
    }
    return failures ? 1 : 0;
}
