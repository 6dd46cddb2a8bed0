#pragma once

/// All that a host includes. It needs the C++20 standard library and nothing else.

#include "quenwick/client/Configuration.h"
#include "quenwick/client/QWClient.h"
#include "quenwick/client/Version.h"
