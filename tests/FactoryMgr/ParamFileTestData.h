#pragma once

#include "FactoryParams.h"

#include <QStringList>

// Test data for the parameter file suites, written out here independently of
// the module's own key table.
namespace ParamFileTestData {

// Every key the file must hold, as "<section>/<key>".
QStringList ExpectedKeys();

// A record whose every value differs from both the in-memory defaults and the
// values for missing keys (booleans, which have only two values, alternate).
FactoryParams DistinctRecord();

// Compares every field that the file stores; describes the first difference.
QString FirstFileFieldDifference(const FactoryParams& a, const FactoryParams& b);

} // namespace ParamFileTestData
