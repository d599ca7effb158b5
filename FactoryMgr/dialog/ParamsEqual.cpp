#include "ParamsEqual.h"

#include "FactoryParamKeys.h"
#include "FactoryParams.h"

#include <cmath>

bool ParamsEqual(const FactoryParams& a, const FactoryParams& b)
{
    // Field by field, so padding never counts.
    for (const FactoryParamKey& key : FactoryParamKey::All()) {
        const double dA = key.Value(a);
        const double dB = key.Value(b);
        if (key.IsDouble() ? !(std::fabs(dA - dB) <= 0.0001) : dA != dB)
            return false;
    }
    return true;
}
