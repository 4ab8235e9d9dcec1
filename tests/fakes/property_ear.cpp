// SPDX-License-Identifier: MIT
#include "property_ear.h"
