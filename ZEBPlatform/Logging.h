#pragma once

// The module Logging: log lines and their handlers.

#include <ZEBPlatform/Logging/OLGLogging.h>
