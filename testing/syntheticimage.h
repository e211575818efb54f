#ifndef EOD_TESTING_SYNTHETICIMAGE_H
#define EOD_TESTING_SYNTHETICIMAGE_H

// Camera images as an eye-tracking camera at 60 Hz would take them, so that compression
// figures mean something: 640x480, 8-bit grey (format IMAGE_FORMAT_GREY8, identifier
// "eye_camera", no line padding). The scene, with its parameters:
// - skin: grey 150, a soft horizontal shading of +-12 levels and a vignette;
// - the eye: a sclera ellipse (grey 205, half-axes 110 x 55 px), an iris (grey 95, radius
//   42 px) and a dark pupil (grey 18, radius 14 to 20 px, breathing at 0.3 Hz) that follows
//   the gaze: fixations of 0.4 s with 0.05 s saccades to random points up to 40 x 18 px off
//   centre;
// - two corneal glints (grey 250, radius 3 px) 12 px apart, fixed relative to the eye centre;
// - the upper eyelid (skin grey with a dark lash line) closing fully for 0.15 s every 4 s and
//   drooping slowly by up to 10 px;
// - head motion: the eye centre drifts over the image by up to 80 px across and 40 px down at
//   0.2 and 0.13 Hz;
// - Gaussian sensor noise, sigma 2 grey levels, independent per pixel and frame.
// An image depends only on its frame number.

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputdata.h>
#include <eod/imageoutputdata.h>

namespace eodtesting {

const unsigned int kEyeImageWidth = 640;
const unsigned int kEyeImageHeight = 480;

boost::shared_ptr<tq::eod::ImageOutputData> syntheticEyeImage(unsigned int frame_num);

// Peak signal-to-noise ratio in dB of b against a over a's width and height (99 for equal
// pixels): how the compression figures judge a lossy image.
double imagePsnr(const tq::eod::ImageOutputData& a, const tq::eod::ImageOutputData& b);

// syntheticFrame(frame_num) with an image collection holding syntheticEyeImage(frame_num).
boost::shared_ptr<tq::eod::EngineOutputData> syntheticFrameWithImage(unsigned int frame_num);

}  // namespace eodtesting

#endif
