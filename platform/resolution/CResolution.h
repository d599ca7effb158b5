#pragma once

#include "IResolution.h"

class CResolution : public IResolution
{
public:
    double GetLogicalDpi() override;
    double GetScaleFactor() override;
    double Scale(double dLength) override;
};
