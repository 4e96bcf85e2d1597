#pragma once

// The module Graphics: geometry as dictionaries, colours.

#include <ZEBUtilities/Graphics/ZEBColor.h>
#include <ZEBUtilities/Graphics/ZEBGeometryDictionaries.h>
