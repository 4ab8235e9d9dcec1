// SPDX-License-Identifier: MIT
#include "fake_panel.h"
