// SPDX-License-Identifier: Apache-2.0
#include "orumlox/version.h"

int32_t vexo_version(void) { return ORUMLOX_VERSION; }
