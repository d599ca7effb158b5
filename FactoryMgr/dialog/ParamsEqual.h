#pragma once

struct FactoryParams;

// Whether two records hold the same settings: whole numbers and booleans
// equal, doubles within 0.0001. Compared section by section (the four axes,
// laser, machine, speed), stopping at the first difference. Padding bytes
// are not compared.
bool ParamsEqual(const FactoryParams& a, const FactoryParams& b);
