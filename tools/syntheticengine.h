#ifndef EOD_TOOLS_SYNTHETICENGINE_H
#define EOD_TOOLS_SYNTHETICENGINE_H

// A stand-in for a tracking engine at 60 Hz: smooth head motion with a consistent
// quaternion, gaze that fixates and jumps in saccades, blinks every few seconds, pupils,
// one face with the 38 fixed landmarks, timing, engine state, world intersections for
// both eyes and the head, GPS and inertia. A frame depends only on its number, so the
// same number always gives the same bytes.

#include <memory>

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputdata.h>

#include "framesource.h"

namespace eodtool {

boost::shared_ptr<tq::eod::EngineOutputData> syntheticFrame(unsigned int frame_num);

// Frames 0, 1, 2, ...; `count` of them, or without end when count is 0.
std::unique_ptr<FrameSource> makeSyntheticSource(unsigned int count);

}  // namespace eodtool

#endif
