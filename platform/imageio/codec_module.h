#pragma once
#include "platform/imageio/codec.h"

/// The one entry of a module that reads, and may write, some formats. `version` is the program's: a module of
/// another one gives null, as it does for a type that it does not know. The functions stay valid for ever.
extern "C" const ostra::CodecFunctions* ostra_codec(const char* version, const char* type);
