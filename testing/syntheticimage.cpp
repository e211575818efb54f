#include "testing/syntheticimage.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include <eod/imagecollectionoutputdata.h>
#include <eod/io/compress/codecsettings.h>

#include "testing/syntheticframe.h"

namespace eodtesting {

namespace {

using tq::eod::ImageOutputData;

const double kRate = 60.0;
const double kPi = 3.14159265358979323846;
const double kSkin = 150.0;
const double kSclera = 205.0;
const double kIris = 95.0;
const double kPupil = 18.0;
const double kGlint = 250.0;
const double kScleraA = 110.0;
const double kScleraB = 55.0;
const double kIrisRadius = 42.0;
const double kGlintRadius = 3.0;
const double kBlinkPeriod = 4.0;
const double kBlinkDuration = 0.15;
const double kFixation = 0.4;
const double kSaccade = 0.05;
const double kNoiseSigma = 2.0;

// The gaze target of fixation k, up to 40 x 18 px off the eye centre.
void fixationTarget(std::uint32_t k, double& x, double& y) {
    std::minstd_rand rng(k + 1);
    std::uniform_real_distribution<double> unit(-0.5, 0.5);
    x = unit(rng) * 80;
    y = unit(rng) * 36;
}

// Gaze offset of the pupil from the eye centre: fixations joined by quick saccades.
void gazeAt(double t, double& gx, double& gy) {
    const double period = kFixation + kSaccade;
    const std::uint32_t k = static_cast<std::uint32_t>(t / period);
    const double phase = std::fmod(t, period);
    const double s = std::min(1.0, phase / kSaccade);
    const double ease = s * s * (3 - 2 * s);
    double x0, y0, x1, y1;
    fixationTarget(k, x0, y0);
    fixationTarget(k + 1, x1, y1);
    gx = x0 + (x1 - x0) * ease;
    gy = y0 + (y1 - y0) * ease;
}

double openness(double t) {
    const double phase = std::fmod(t, kBlinkPeriod) - (kBlinkPeriod - kBlinkDuration);
    if (phase < 0) return 1.0;
    return std::fabs(2 * phase / kBlinkDuration - 1.0);
}

}  // namespace

boost::shared_ptr<ImageOutputData> syntheticEyeImage(unsigned int frame_num) {
    const double t = frame_num / kRate;
    const double cx = kEyeImageWidth / 2.0 + 80 * std::sin(2 * kPi * 0.2 * t);
    const double cy = kEyeImageHeight / 2.0 + 40 * std::sin(2 * kPi * 0.13 * t + 0.7);
    double gx, gy;
    gazeAt(t, gx, gy);
    const double px = cx + gx, py = cy + gy;
    const double pupil_r = 17 + 3 * std::sin(2 * kPi * 0.3 * t);
    // The lid edge: from above the eye (open) down to its lower edge (closed).
    const double droop = 5 + 5 * std::sin(2 * kPi * 0.05 * t);
    const double lid_top = cy - kScleraB + droop;
    const double lid = lid_top + (1.0 - openness(t)) * (2 * kScleraB - droop);

    std::vector<unsigned char> pixels(kEyeImageWidth * kEyeImageHeight);
    std::mt19937 rng(frame_num * 2654435761u + 1);
    std::normal_distribution<double> noise(0.0, kNoiseSigma);
    for (unsigned int y = 0; y < kEyeImageHeight; ++y) {
        for (unsigned int x = 0; x < kEyeImageWidth; ++x) {
            const double dx = x - cx, dy = y - cy;
            const double vignette =
                1.0 - 0.15 * (dx * dx + dy * dy) / (kEyeImageWidth * kEyeImageWidth / 4.0);
            double v = (kSkin + 12 * std::sin(x * kPi / kEyeImageWidth)) * vignette;
            const double e = (dx * dx) / (kScleraA * kScleraA) + (dy * dy) / (kScleraB * kScleraB);
            if (e < 1.0 && y >= lid) {
                const double rx = x - px, ry = y - py;
                const double r = std::sqrt(rx * rx + ry * ry);
                if (r < pupil_r) {
                    v = kPupil;
                } else if (r < kIrisRadius) {
                    v = kIris + 10 * std::sin(std::atan2(ry, rx) * 12) * (r / kIrisRadius);
                } else {
                    v = kSclera - 25 * e;
                }
                for (double side : {-6.0, 6.0}) {
                    const double qx = x - (px + side - 4), qy = y - (py - 6);
                    if (qx * qx + qy * qy < kGlintRadius * kGlintRadius) v = kGlint;
                }
            } else if (std::fabs(y - lid) < 3 && e < 1.3) {
                v = 40;  // lashes along the lid edge
            }
            v += noise(rng);
            pixels[y * kEyeImageWidth + x] =
                static_cast<unsigned char>(std::min(255.0, std::max(0.0, std::round(v))));
        }
    }
    boost::shared_ptr<ImageOutputData> image(new ImageOutputData);
    image->setNewImage(kEyeImageWidth, kEyeImageHeight, kEyeImageWidth, pixels.data(),
                       tq::eod::io::IMAGE_FORMAT_GREY8);
    image->setImageIdentifier("eye_camera");
    return image;
}

double imagePsnr(const ImageOutputData& a, const ImageOutputData& b) {
    double sum = 0;
    for (unsigned int y = 0; y < a.height(); ++y) {
        for (unsigned int x = 0; x < a.width(); ++x) {
            const double d = double(a.rawData()[y * a.bytesPerLine() + x]) -
                             b.rawData()[y * b.bytesPerLine() + x];
            sum += d * d;
        }
    }
    return sum == 0 ? 99.0 : 10 * std::log10(255.0 * 255.0 * a.width() * a.height() / sum);
}

boost::shared_ptr<tq::eod::EngineOutputData> syntheticFrameWithImage(unsigned int frame_num) {
    boost::shared_ptr<tq::eod::EngineOutputData> frame = syntheticFrame(frame_num);
    frame->typedSubObjectAddIfMissing<tq::eod::ImageCollectionOutputData>()->addImage(
        syntheticEyeImage(frame_num));
    return frame;
}

}  // namespace eodtesting
