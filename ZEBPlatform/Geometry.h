#pragma once

// The module Geometry: points, sizes, rectangles, locations, and their boxes.

#include <ZEBPlatform/Geometry/CGGeometry.h>
#include <ZEBPlatform/Geometry/CLLocation.h>
#include <ZEBPlatform/Geometry/NSValue.h>
