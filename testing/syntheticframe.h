#ifndef EOD_TESTING_SYNTHETICFRAME_H
#define EOD_TESTING_SYNTHETICFRAME_H

// Frames as a tracking engine at 60 Hz would make them: smooth head motion with a consistent
// quaternion, gaze that fixates and jumps in saccades, blinks every few seconds, pupils, one
// face with the 38 fixed landmarks, timing, engine state, world intersections for both eyes
// and the head, GPS and inertia; about 1.5 KB encoded. A frame depends only on its number,
// so the same number always gives the same bytes. Built on the library's public API only;
// the eod command, the tests and the benchmarks share it.

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputdata.h>

namespace eodtesting {

boost::shared_ptr<tq::eod::EngineOutputData> syntheticFrame(unsigned int frame_num);

}  // namespace eodtesting

#endif
