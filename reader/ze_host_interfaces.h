// The host contract moved to reader/api/; this name stays for the one test suite that still uses it.
#pragma once

#include "reader/api/ze_host_interfaces.h"
