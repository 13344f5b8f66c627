// Runs the GUI tests with the preferences in a temporary HOME.
#include <QApplication>
#include <QTemporaryDir>
#include <QtTest>

#include "GuiTests.h"

// The importer library of Debian 12 leaks memory while reading some files (the ostrex-gui tests
// export through it); in sanitizer builds the leak checker leaves out leaks allocated inside it.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libassimp.so\n";
}

int main(int argc, char** argv)
{
    QTemporaryDir home;
    if (!home.isValid())
        return 1;
    qputenv("HOME", home.path().toUtf8());
    qunsetenv("OSTREX_STUDIO_PROFILES");
    QApplication application(argc, argv);
    CGuiTest tests;
    int failures = QTest::qExec(&tests, argc, argv);
#ifdef OSTREX_HAVE_GUI_APP
    failures += RunOstrexGuiTests(argc, argv);
#endif
    return failures == 0 ? 0 : 1;
}
