// Property sheets (comctl32).
#pragma once

#include "windows.h"
