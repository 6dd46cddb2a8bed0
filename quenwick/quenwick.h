#pragma once

/// @file
/// All that a host includes.

#include "quenwick/client/QWClient.h"
