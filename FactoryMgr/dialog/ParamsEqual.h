#pragma once

struct FactoryParams;

// Whether two records hold the same settings: whole numbers and booleans
// equal, doubles within 0.0001. Every field of the record is compared, and
// nothing else: padding bytes never count. The project's one comparison of
// whole records.
bool ParamsEqual(const FactoryParams& a, const FactoryParams& b);
