#pragma once

// The module Graphics: geometry as dictionaries.

#include <ZEBUtilities/Graphics/ZEBGeometryDictionaries.h>
