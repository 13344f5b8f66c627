// Build-time tool: turns Markdown files into one PDF (Qt's Markdown reader and PDF writer, so no
// LaTeX is needed).  manual_pdf OUTPUT.pdf INPUT.md...
#include <QFile>
#include <QGuiApplication>
#include <QPageLayout>
#include <QPageSize>
#include <QPdfWriter>
#include <QTextDocument>

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc < 3)
    {
        std::fprintf(stderr, "usage: manual_pdf OUTPUT.pdf INPUT.md...\n");
        return 2;
    }
    QGuiApplication app(argc, argv);
    QString markdown;
    for (int i = 2; i < argc; ++i)
    {
        QFile file(QString::fromLocal8Bit(argv[i]));
        if (!file.open(QIODevice::ReadOnly))
        {
            std::fprintf(stderr, "manual_pdf: cannot read %s\n", argv[i]);
            return 1;
        }
        markdown += QString::fromUtf8(file.readAll()) + "\n\n";
    }
    QTextDocument document;
    document.setMarkdown(markdown);
    QPdfWriter writer(QString::fromLocal8Bit(argv[1]));
    writer.setTitle("Ostrex User Manual");
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setPageMargins(QMarginsF(20, 20, 20, 20), QPageLayout::Millimeter);
    document.print(&writer);
    return QFile::exists(QString::fromLocal8Bit(argv[1])) ? 0 : 1;
}
