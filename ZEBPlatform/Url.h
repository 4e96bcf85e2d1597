#pragma once

// The module Url: parts of URLs, their percent encoding, and URLs made of parts.

#include <ZEBPlatform/Url/NSString+PercentEncoding.h>
#include <ZEBPlatform/Url/NSURL+Components.h>
#include <ZEBPlatform/Url/NSURLComponents.h>
#include <ZEBPlatform/Url/NSURLQueryItem.h>
