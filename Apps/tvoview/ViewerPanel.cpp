#include "ViewerPanel.h"

#include <QHeaderView>
#include <QTableWidget>
#include <QTreeWidget>

#include <vector>

#include "QMXTModelTVO.h"
#include "TVOMeshLayout.h"
#include "TVOSummary.h"

namespace
{
// "positions short x3, normals DEC3N, uv float x2, ..." for the present streams.
QString VertexFormat(const STVOMesh& m)
{
    const std::pair<const char*, const CTVOData*> streams[] = {
        {"positions", &m.sVertex},        {"normals", &m.sNormals},
        {"tangents", &m.sTangents},       {"binormals", &m.sBinormals},
        {"colours", &m.sVtxColours},      {"bone indices", &m.sBoneIdx},
        {"bone weights", &m.sBoneWeight}, {"uv", m.nNumUVW && m.psUVW ? &m.psUVW[0] : nullptr}};
    QStringList parts;
    for (const auto& s : streams)
        if (s.second && TVOStreamPresent(m, *s.second))
            parts << QString("%1 %2 x%3")
                         .arg(s.first, QMXTModelTVODataTypeName(s.second->eType))
                         .arg(s.second->n);
    return parts.join(", ") + (m.pInterleaved ? ", interleaved" : "");
}
} // namespace

void TVOFillNodeTree(QTreeWidget& tree, const STVOScene& s)
{
    tree.clear();
    tree.setColumnCount(3);
    tree.setHeaderLabels({"node", "kind", "index"});
    std::vector<QTreeWidgetItem*> items(s.nNumNode);
    for (uint32_t i = 0; i < s.nNumNode; ++i)
        items[i] = new QTreeWidgetItem({QString::fromUtf8(s.pNode[i].pszName ? s.pNode[i].pszName : ""),
                                        TVONodeKind(s, i), QString::number(s.pNode[i].nIdx)});
    // Parents are in range and free of loops (checked when the file was opened).
    for (uint32_t i = 0; i < s.nNumNode; ++i)
    {
        const int32_t parent = s.pNode[i].nIdxParent;
        if (parent >= 0)
            items[parent]->addChild(items[i]);
        else
            tree.addTopLevelItem(items[i]);
    }
    tree.expandAll();
    tree.header()->setSectionResizeMode(QHeaderView::ResizeToContents);
}

void TVOFillMeshTable(QTableWidget& table, const STVOScene& s)
{
    const QStringList headers = {"vertices", "triangles", "strips", "batches", "bytes", "vertex format"};
    table.setColumnCount(headers.size());
    table.setHorizontalHeaderLabels(headers);
    table.setRowCount(static_cast<int>(s.nNumMesh));
    for (uint32_t i = 0; i < s.nNumMesh; ++i)
    {
        const STVOMesh& m = s.pMesh[i];
        const QString cells[] = {QString::number(m.nNumVertex),    QString::number(m.nNumFaces),
                                 QString::number(m.nNumStrips),    QString::number(m.sBoneBatch.nBatchCnt),
                                 QString::number(TVOMeshBytes(m)), VertexFormat(m)};
        for (int c = 0; c < headers.size(); ++c)
            table.setItem(static_cast<int>(i), c, new QTableWidgetItem(cells[c]));
    }
    table.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table.horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
}
