// The side panel's contents built from a scene: the node tree and the per-mesh statistics table.
#pragma once

class QTableWidget;
class QTreeWidget;
struct STVOScene;

// Nodes under their parents, each with its kind and index.
void TVOFillNodeTree(QTreeWidget& tree, const STVOScene& scene);
// One row a mesh: vertices, triangles, strips, bone batches, vertex format, bytes.
void TVOFillMeshTable(QTableWidget& table, const STVOScene& scene);
