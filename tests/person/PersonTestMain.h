#pragma once

#include "XServer.h"

#include <QApplication>
#include <QPointer>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdio>

// A person-level test executable: its own X server on a free display, its
// own configuration directories, the application on the xcb platform, so
// that input comes from the X server as it does on a desktop.
#define FACTORYMGR_PERSON_TEST_MAIN(TestClass)                                                                   \
    int main(int argc, char** argv)                                                                              \
    {                                                                                                            \
        QTemporaryDir home(QDir::tempPath() + "/factorymgr-person-XXXXXX");                                      \
        if (!home.isValid()) {                                                                                   \
            std::fprintf(stderr, "cannot create a temporary directory\n");                                       \
            return 1;                                                                                            \
        }                                                                                                        \
        qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toLocal8Bit());                                     \
        qputenv("XDG_DATA_HOME", (home.path() + "/data").toLocal8Bit());                                         \
        QDir().mkpath(home.path() + "/runtime");                                                                 \
        QFile::setPermissions(home.path() + "/runtime", QFileDevice::ReadOwner | QFileDevice::WriteOwner         \
                                                            | QFileDevice::ExeOwner);                            \
        qputenv("XDG_RUNTIME_DIR", (home.path() + "/runtime").toLocal8Bit());                                    \
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
            QList<QPointer<QWidget>> leftOver;                                                                   \
            for (QWidget* pWidget : QApplication::topLevelWidgets())                                             \
                leftOver << pWidget;                                                                             \
            for (const QPointer<QWidget>& pWidget : leftOver)                                                    \
                if (pWidget && !pWidget->parentWidget())                                                         \
                    delete pWidget.data();                                                                       \
        }                                                                                                        \
        return nResult;                                                                                          \
    }
