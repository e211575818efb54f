#include <eod/gazeintersectionoutputdatav4.h>
#include <eod/serializableerror.h>

#include "eod/detail/bytecodec.h"
#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

namespace {

bool isEyeId(int value) { return value == RIGHT_EYE || value == LEFT_EYE || value == BOTH_EYES; }

}  // namespace

GazeIntersectionOutputDataV4::~GazeIntersectionOutputDataV4() = default;

GazeIntersectionOutputDataV4* GazeIntersectionOutputDataV4::clone() const {
    return new GazeIntersectionOutputDataV4(*this);
}

void GazeIntersectionOutputDataV4::setEyeId(EyeId eye_id) {
    EOD_REQUIRE(isEyeId(eye_id), "eye_id should be either LEFT_EYE, RIGHT_EYE or BOTH_EYES");
    _eye_id = eye_id;
}

unsigned int GazeIntersectionOutputDataV4::numEngineSpecificDataBytes() const {
    return IntersectionOutputBaseV2::numEngineSpecificDataBytes() + 1;
}

void GazeIntersectionOutputDataV4::appendEngineSpecificData(
    std::vector<unsigned char>& buffer) const {
    IntersectionOutputBaseV2::appendEngineSpecificData(buffer);
    detail::appendNumber(buffer, static_cast<char>(_eye_id));
}

void GazeIntersectionOutputDataV4::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                                          int& read_pos) {
    IntersectionOutputBaseV2::readEngineSpecificData(buffer, read_pos);
    // Checked before the conversion: an EyeId must only ever hold one of its three values.
    const char eye_id = detail::readNumber<char>(buffer, read_pos);
    if (!isEyeId(eye_id)) {
        throw SerializableError(
            "GazeIntersectionOutputDataV4::readEngineSpecificData() - eye id out of range");
    }
    _eye_id = static_cast<EyeId>(eye_id);
}

void GazeIntersectionOutputDataV4::printOwnHeader(std::ostream& os) const {
    detail::TextLine line(os);
    detail::Columns(os) << "EYE_ID";
    IntersectionOutputBaseV2::printOwnHeader(os);
}

void GazeIntersectionOutputDataV4::printOwnData(std::ostream& os) const {
    detail::TextLine line(os);
    detail::Columns(os) << static_cast<int>(_eye_id);
    IntersectionOutputBaseV2::printOwnData(os);
}

}  // namespace eod
}  // namespace tq
