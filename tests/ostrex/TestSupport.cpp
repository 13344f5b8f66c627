#include "TestSupport.h"

#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "NodeTransform.h"

// The importer library of Debian 12 leaks memory while reading some files (AMF, IRR, LWOB, OpenGEX,
// RAW test models leak even in a program that only calls ReadFile). Leaks allocated inside it are
// its own; the leak checker is told to leave them out, everything else is still reported.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libassimp.so\n";
}

aiMatrix4x4 GlobalOf(const aiNode* node)
{
    aiMatrix4x4 global = node->mTransformation;
    for (const aiNode* p = node->mParent; p; p = p->mParent)
        global = p->mTransformation * global;
    return global;
}

QMXTMATRIXf RowLayout(const aiMatrix4x4& m)
{
    QMXTMATRIXf out;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            out(r, c) = m[c][r];
    return out;
}

QMXTMATRIXf ContentWorld(const SContent& content, int index, int frame)
{
    QMXTMATRIXf world;
    QMXTMatrixIdentityF(world);
    for (int i = index; i >= 0; i = content.nodes[i].parent)
    {
        const CNode& n = content.nodes[i];
        QMXTMATRIXf out;
        world = QMXTMatrixMultiplyF(out, world, MatrixFromNodeTM(n.frames.empty() ? n.tm : n.frames[frame]));
    }
    return world;
}

const aiScene* LoadLikeTheCommandLine(Assimp::Importer& importer, const std::string& path)
{
    return importer.ReadFile(path,
                             aiProcess_Triangulate | aiProcess_SortByPType | aiProcess_ValidateDataStructure);
}

int ContentIndex(const SContent& content, const std::string& name)
{
    for (size_t i = 0; i < content.nodes.size(); ++i)
        if (content.nodes[i].name == name)
            return static_cast<int>(i);
    return -1;
}

namespace
{
std::string Quoted(const std::string& s)
{
    std::string q = "'";
    for (char c : s)
        q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
}
} // namespace

SRun RunOstrex(const std::string& dir, const std::vector<std::string>& args, const std::string& env)
{
    const CTempDir streams; // outside dir, so the folder holds only what the program wrote
    std::string command = "cd " + Quoted(dir) + " && env " + env + " " + Quoted(OSTREX_EXECUTABLE);
    for (const std::string& a : args)
        command += " " + Quoted(a);
    command += " >" + Quoted(streams / "out") + " 2>" + Quoted(streams / "err") + " </dev/null";
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadAll(streams / "out"), ReadAll(streams / "err")};
}

void ExpectMatrixNear(const QMXTMATRIXf& got, const QMXTMATRIXf& want, float tol, const std::string& what)
{
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(got[i], want[i], tol) << what << ", element " << i;
}

void ExpectVecNear(const QMXTVECTOR3f& got, const aiVector3D& want, float tol, const std::string& what)
{
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR((&got.x)[i], want[i], tol) << what << ", element " << i;
}
