// Helpers for the ostrex tests: reference transforms straight from the importer's data, world
// matrices of filled content, and a runner of the program.
#pragma once

#include "TempFiles.h"

#include <assimp/Importer.hpp>
#include <assimp/scene.h>

#include <string>
#include <vector>

#include "Content.h"
#include "QMXTModelTVO.h"
#include "TVO.h"

// The importer's global transform of a node: its matrix times those of its ancestors.
aiMatrix4x4 GlobalOf(const aiNode* node);
// The importer's matrix in the scene model's row-vector layout.
QMXTMATRIXf RowLayout(const aiMatrix4x4& m);

// World matrix of a content node at a frame (the still sample when the node has no frames), rebuilt
// from the samples as the scene model rebuilds local matrices.
QMXTMATRIXf ContentWorld(const SContent& content, int index, int frame = 0);

// Loads a file the way the command line does.
const aiScene* LoadLikeTheCommandLine(Assimp::Importer& importer, const std::string& path);

// Index of the content node with that name, -1 when none (the first one).
int ContentIndex(const SContent& content, const std::string& name);

// What a run of the ostrex program gave: exit status (-1 when it did not exit), its two streams.
struct SRun
{
    int code = -1;
    std::string out, err;
};
// Runs ostrex in folder dir with the arguments and NAME=VALUE environment words, reading no input.
SRun RunOstrex(const std::string& dir, const std::vector<std::string>& args, const std::string& env = "");

// Element-wise comparisons, failure messages naming what was compared.
void ExpectMatrixNear(const QMXTMATRIXf& got, const QMXTMATRIXf& want, float tol, const std::string& what);
void ExpectVecNear(const QMXTVECTOR3f& got, const aiVector3D& want, float tol, const std::string& what);
