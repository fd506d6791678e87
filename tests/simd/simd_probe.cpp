// SPDX-License-Identifier: Apache-2.0
#include "tests/simd/simd_probe.h"

#include "simd/simd.h"

namespace lox::LOX_SET {

#if LOX_VECTORS

namespace {
#include "tests/simd/simd_probe_run.h"
}  // namespace

constinit const ProbeRows probe_rows = {
    {probe_run<Wide>, Wide::n, Wide::kStreamAlignment},
    {probe_run<Narrow>, Narrow::n, Narrow::kStreamAlignment}};

#else

constinit const ProbeRows probe_rows = {{nullptr, 0, 0}, {nullptr, 0, 0}};

#endif

}  // namespace lox::LOX_SET
