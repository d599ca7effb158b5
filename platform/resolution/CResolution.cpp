#include "CResolution.h"

#include <QGuiApplication>
#include <QScreen>

#include <new>

double CResolution::GetLogicalDpi()
{
    const QScreen* pScreen = qobject_cast<QGuiApplication*>(QCoreApplication::instance())
        ? QGuiApplication::primaryScreen()
        : nullptr;
    return pScreen ? pScreen->logicalDotsPerInch() : 96.0;
}

double CResolution::GetScaleFactor()
{
    return GetLogicalDpi() / 96.0;
}

double CResolution::Scale(double dLength)
{
    return dLength * GetScaleFactor();
}

extern "C" {
__attribute__((visibility("default"))) void* NewInterface() noexcept
{
    return static_cast<IResolution*>(new (std::nothrow) CResolution);
}

__attribute__((visibility("default"))) void ReleaseInterface(void* pInterface) noexcept
{
    delete static_cast<IResolution*>(pInterface);
}
}
