#ifndef EOD_FACESETOUTPUTDATA_H
#define EOD_FACESETOUTPUTDATA_H

// All records of one tracked face: head (HeadOutputDataV2, id 16), face (FaceOutputDataV2,
// id 93) and eye (EyeOutputData, id 15) records as sub-records. No fields of its own; a
// frame holds one face set per face, side by side.

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputbase.h>
#include <eod/eyeoutputdata.h>
#include <eod/faceoutputdatav2.h>
#include <eod/headoutputdatav2.h>

namespace tq {
namespace eod {

class FaceSetOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 94;

    FaceSetOutputData() = default;
    FaceSetOutputData(const FaceSetOutputData&) = default;
    FaceSetOutputData& operator=(const FaceSetOutputData&) = default;
    ~FaceSetOutputData() override;
    void copyFrom(const FaceSetOutputData& other) { *this = other; }

    char objectID() const override { return THIS_OBJECT_ID; }
    FaceSetOutputData* clone() const override;
    // One face set per face: a parent may hold several.
    bool forbidDuplicateSiblings() const override { return false; }

    // The face's head, face and eye records, each null when missing.
    boost::shared_ptr<HeadOutputDataV2> headOutputData();
    boost::shared_ptr<HeadOutputDataV2 const> headOutputData() const;
    boost::shared_ptr<FaceOutputDataV2> faceOutputData();
    boost::shared_ptr<FaceOutputDataV2 const> faceOutputData() const;
    boost::shared_ptr<EyeOutputData> eyeOutputData();
    boost::shared_ptr<EyeOutputData const> eyeOutputData() const;

    // No columns of its own; the sub-records' columns follow.
    void printOwnHeader(std::ostream&) const override {}
    void printOwnData(std::ostream&) const override {}
};

}  // namespace eod
}  // namespace tq

#endif
