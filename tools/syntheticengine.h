#ifndef EOD_TOOLS_SYNTHETICENGINE_H
#define EOD_TOOLS_SYNTHETICENGINE_H

// A stand-in for a tracking engine: the frames of syntheticFrame() one after another.

#include <memory>

#include "framesource.h"

namespace eodtool {

// Frames 0, 1, 2, ...; `count` of them, or without end when count is 0.
std::unique_ptr<FrameSource> makeSyntheticSource(unsigned int count);

}  // namespace eodtool

#endif
