// A host that still holds a sibling plug-in's interface when it ends, and lets
// go of it (and even asks for another) from a static destructor that runs after
// the loader's own statics are gone. It prints "late work done" and exits 0
// when all of that did no harm; a failed check exits 1.
#include "PluginLoader.h"
#include "PluginTrace.h"

#include <QByteArray>

#include <cstdio>
#include <cstdlib>

namespace {
void Fail(const char* szWhat, const QByteArray& seen)
{
    std::fprintf(stderr, "%s (seen: \"%s\")\n", szWhat, seen.constData());
    std::fflush(stderr);
    std::_Exit(1);
}

struct LateHost
{
    LateHost() {}
    ~LateHost();
    void* pKept = nullptr;
};
// Made before every other static of this program, so destroyed after all of them.
LateHost g_host __attribute__((init_priority(101)));

LateHost::~LateHost()
{
    // The loader released what was still registered when its statics went.
    const QByteArray atEnd = PluginTrace_Take();
    if (atEnd != "TestPluginGood")
        Fail("the kept record was not released when the loader ended", atEnd);

    ReleasePluginInterface(pKept);
    void* pLate = LoadPluginInterface(QStringLiteral("TestPluginGood2"), false, nullptr);
    if (pLate)
        Fail("a load after the loader ended was registered", QByteArray());
    ReleasePluginInterface(pLate);
    ReleaseAllPluginInterfaces();
    if (!ModulePluginRegistry().isEmpty())
        Fail("the registry is not empty after the loader ended", QByteArray());
    const QByteArray late = PluginTrace_Take();
    if (!late.isEmpty())
        Fail("something was released after the loader ended", late);

    std::puts("late work done");
    std::fflush(stdout);
}
}

int main()
{
    g_host.pKept = LoadPluginInterface(QStringLiteral("TestPluginGood"), false, nullptr);
    return g_host.pKept ? 0 : 1;
}
