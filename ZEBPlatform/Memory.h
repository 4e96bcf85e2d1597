#pragma once

// The module Memory: objects, references and blocks.

#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Overloaded.h>
#include <ZEBPlatform/Memory/ProtocolRef.h>
#include <ZEBPlatform/Memory/Ref.h>
#include <ZEBPlatform/Memory/TypeName.h>
#include <ZEBPlatform/Memory/WeakRef.h>
