// Generators of scene model nodes, cameras and lights from scene content, and the animation
// clean-up that runs once all nodes exist (removing animation that never changes, optional indexing).
#pragma once

#include <cstdint>
#include <vector>

#include "BuilderSettings.h"
#include "Content.h"
#include "QMXTModelTVO.h"

// A scene model node under construction, with what the builder needs beyond the record: the content
// node it came from, its static transform, and the node positions that are to become its children.
// Owns the record's arrays until Release hands them over.
class CTVONodeEx
{
  public:
    CTVONodeEx();
    ~CTVONodeEx();
    CTVONodeEx(CTVONodeEx&& o) noexcept;
    CTVONodeEx& operator=(CTVONodeEx&& o) noexcept;
    CTVONodeEx(const CTVONodeEx&) = delete;
    CTVONodeEx& operator=(const CTVONodeEx&) = delete;

    // Fills the record from a content node: source index, parent, name, static transform, and with
    // frames (frameCount > 0) one position, rotation and scale key a frame, or one matrix a frame
    // when bExportMatrices is set; the node's user data. Data index and material index are -1.
    void Gen(const CNode& cnode, uint32_t frameCount, const SBuilderSettings& settings);
    // Hands the record with its arrays to the caller; the builder fields stay.
    STVONode Release();
    void Free();

    STVONode node;
    int nSourceIndex = -1;
    float pfStaticPRS[14]; // position 3, rotation 4, scale with stretch 7
    float pfStaticMatrix[16];
    std::vector<uint32_t> children; // node positions to become this node's children
};

class CTVOCameraEx
{
  public:
    // Copies target, field of view, far and near. With frames, the first frameCount fields of view
    // become the field-of-view animation, dropped again when every one equals the static value.
    static STVOCamera Gen(const SCameraData* camera, uint32_t frameCount);
};

class CTVOLightEx
{
  public:
    static STVOLight Gen(const SLightData* light);
};

// Removes the animation of one node that never differs from its static transform and, with
// bIndexAnimations, stores the rest indexed; then fills every missing channel with its static key.
// frameCount is the scene's frame count.
void GenNodeAnimation(STVONode& node, const CTVONodeEx& statics, uint32_t frameCount,
                      const SBuilderSettings& settings);

// Stores an animation channel of frameCount keys of n floats as unique keys plus one float offset a
// frame. Gives up (returns false, *ppIdx null, data untouched) as soon as indexing would not save
// space; otherwise replaces *ppData with the unique keys and returns true. Throws std::bad_alloc,
// leaving the arrays as they were, when out of memory.
bool CreateIndexedAnimation(uint32_t** ppIdx, float** ppData, uint32_t frameCount, uint32_t n);

// The builder's C allocations for records that are freed with free(). Like new, they throw
// std::bad_alloc when out of memory, so a failed allocation unwinds to CTVO::ProcessWith, which fails
// the export, instead of leaving a null array behind a non-zero count.
void* AllocOrThrow(size_t bytes);
// malloc'ed copy of a string (an empty string for null).
char* DuplicateString(const char* s);
// malloc'ed copy of a byte list, or null when empty.
uint8_t* DuplicateBytes(const std::vector<uint8_t>& bytes);
