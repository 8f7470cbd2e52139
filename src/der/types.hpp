// Short names used throughout the inside.
#pragma once

#include "crypto/types.hpp"
