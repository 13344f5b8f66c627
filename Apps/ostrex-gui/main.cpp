// ostrex-gui: the options window, profiles and output log without Maya: open a scene, export it.
#include <QApplication>
#include <QMessageBox>

#include <cstdio>

#include "GuiCommandLine.h"
#include "GuiSession.h"
#include "OptionsWindow.h"
#include "Output.h"

// The importer library of Debian 12 leaks memory while reading some files; in sanitizer builds the
// leak checker is told to leave out leaks allocated inside it.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libassimp.so\n";
}

int main(int argc, char** argv)
{
    const SGuiCommandLine cl = ParseGuiCommandLine(argc, argv);
    if (cl.help)
    {
        std::fputs(GuiCommandLineHelp().c_str(), stdout);
        return 0;
    }
    if (!cl.error.empty())
    {
        std::fprintf(stderr, "ostrex-gui: usage error: %s\nTry 'ostrex-gui --help'.\n", cl.error.c_str());
        return 2;
    }
    QApplication app(argc, argv);
    CDlgOutput::Instance().EnsureApplication(argc, argv);
    int code = 0;
    {
        CGuiSession session;
        session.window().show();
        if (!cl.scene.empty())
            session.openScene(QString::fromLocal8Bit(cl.scene.c_str()));
        code = app.exec();
    }
    CDlgOutput::Instance().Kill();
    return code;
}
