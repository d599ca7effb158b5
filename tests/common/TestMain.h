#pragma once

#include <QApplication>
#include <QPointer>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdio>

namespace FactoryMgrTest {
// Points the user's configuration, data and runtime directories into home,
// so that tests never share files and run in parallel in any order.
inline bool UseHome(const QTemporaryDir& home)
{
    if (!home.isValid()) {
        std::fprintf(stderr, "cannot create a temporary directory\n");
        return false;
    }
    qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toLocal8Bit());
    qputenv("XDG_DATA_HOME", (home.path() + "/data").toLocal8Bit());
    QDir().mkpath(home.path() + "/runtime");
    QFile::setPermissions(home.path() + "/runtime",
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    qputenv("XDG_RUNTIME_DIR", (home.path() + "/runtime").toLocal8Bit());
    return true;
}

// What code under test left open goes before the application, as at a host's quit.
inline void DeleteLeftOverWindows()
{
    QList<QPointer<QWidget>> leftOver;
    for (QWidget* pWidget : QApplication::topLevelWidgets())
        leftOver << pWidget;
    for (const QPointer<QWidget>& pWidget : leftOver)
        if (pWidget && !pWidget->parentWidget())
            delete pWidget.data();
}
}

// Every test executable gets a user configuration directory of its own, made
// before the application object exists. Offscreen unless a platform is asked for.
#define FACTORYMGR_TEST_MAIN(TestClass)                                                                          \
    int main(int argc, char** argv)                                                                              \
    {                                                                                                            \
        QTemporaryDir home(QDir::tempPath() + "/factorymgr-test-XXXXXX");                                        \
        if (!FactoryMgrTest::UseHome(home))                                                                      \
            return 1;                                                                                            \
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))                                                      \
            qputenv("QT_QPA_PLATFORM", "offscreen");                                                             \
        QApplication app(argc, argv);                                                                            \
        app.setAttribute(Qt::AA_DontUseNativeDialogs, true);                                                     \
        TestClass tc;                                                                                            \
        QTEST_SET_MAIN_SOURCE_PATH                                                                               \
        const int nResult = QTest::qExec(&tc, argc, argv);                                                       \
        FactoryMgrTest::DeleteLeftOverWindows();                                                                 \
        return nResult;                                                                                          \
    }
