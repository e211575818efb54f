#ifndef EOD_EYEOUTPUTDATA_H
#define EOD_EYEOUTPUTDATA_H

// Groups what the tracker knows about the eyes in one frame: an optional
// EyeClosureOutputData, GazeOutputData and PupilOutputData as composite children. No
// engine-specific data and no columns of its own.

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputbase.h>
#include <eod/eyeclosureoutputdata.h>
#include <eod/gazeoutputdata.h>
#include <eod/pupiloutputdata.h>

namespace tq {
namespace eod {

class EyeOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 15;
    static constexpr char EYE_OUTPUT_DATA_ID = 15;

    EyeOutputData() = default;
    EyeOutputData(const EyeOutputData&) = default;
    EyeOutputData& operator=(const EyeOutputData&) = default;
    ~EyeOutputData() override;
    void copyFrom(const EyeOutputData& other);

    char objectID() const override { return THIS_OBJECT_ID; }
    EyeOutputData* clone() const override;

    // The child of each kind, or null when there is none. Throws SerializableError when
    // the child stored under the kind's object id is of another class.
    boost::shared_ptr<EyeClosureOutputData> eyeClosureOutputData();
    boost::shared_ptr<const EyeClosureOutputData> eyeClosureOutputData() const;
    boost::shared_ptr<GazeOutputData> gazeOutputData();
    boost::shared_ptr<const GazeOutputData> gazeOutputData() const;
    boost::shared_ptr<PupilOutputData> pupilOutputData();
    boost::shared_ptr<const PupilOutputData> pupilOutputData() const;

    void printOwnHeader(std::ostream&) const override {}
    void printOwnData(std::ostream&) const override {}
};

}  // namespace eod
}  // namespace tq

#endif
