#pragma once

#include "TestMain.h"
#include "XServer.h"

// A person-level test executable: its own X server on a free display, its
// own configuration directories, the application on the xcb platform, so
// that input comes from the X server as it does on a desktop.
#define FACTORYMGR_PERSON_TEST_MAIN(TestClass)                                                                   \
    int main(int argc, char** argv)                                                                              \
    {                                                                                                            \
        QTemporaryDir home(QDir::tempPath() + "/factorymgr-person-XXXXXX");                                      \
        if (!FactoryMgrTest::UseHome(home))                                                                      \
            return 1;                                                                                            \
        XServer server;                                                                                          \
        if (!server.Start(1600, 1200)) {                                                                         \
            std::fprintf(stderr, "%s\n", qPrintable(server.Error()));                                            \
            return 1;                                                                                            \
        }                                                                                                        \
        qputenv("DISPLAY", server.Display().toLocal8Bit());                                                      \
        qputenv("QT_QPA_PLATFORM", "xcb");                                                                       \
        qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");                                                               \
        int nResult = 1;                                                                                         \
        {                                                                                                        \
            QApplication app(argc, argv);                                                                        \
            app.setAttribute(Qt::AA_DontUseNativeDialogs, true);                                                 \
            TestClass tc;                                                                                        \
            QTEST_SET_MAIN_SOURCE_PATH                                                                           \
            nResult = QTest::qExec(&tc, argc, argv);                                                             \
            FactoryMgrTest::DeleteLeftOverWindows();                                                             \
        }                                                                                                        \
        return nResult;                                                                                          \
    }
