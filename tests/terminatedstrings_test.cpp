#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <eod/eod.h>

#include "recordtesting.h"

using namespace tq::eod;
using namespace eodtest;

namespace {

// A record with a string that travels terminated by a NUL byte, and the setter and getter of
// that string.
struct StringField {
    const char* module;
    const char* reason;
    boost::shared_ptr<Serializable> record;
    std::function<void(Serializable&, const std::string&)> set;
    std::function<std::string(const Serializable&)> get;
};

template <class Record>
StringField objectName() {
    return {"intersectionoutputbase", "name contains a NUL character",
            boost::shared_ptr<Serializable>(new Record()),
            [](Serializable& r, const std::string& s) {
                dynamic_cast<Record&>(r).setIntersectionObjectName(s);
            },
            [](const Serializable& r) {
                return dynamic_cast<const Record&>(r).intersectionObjectName();
            }};
}

template <class Record>
StringField label() {
    return {"intersectionoutputbasev2", "label contains a NUL character",
            boost::shared_ptr<Serializable>(new Record()),
            [](Serializable& r, const std::string& s) {
                Record& record = dynamic_cast<Record&>(r);
                record.clearAllData();
                record.addIntersection(s, {1, 2, 3});
            },
            [](const Serializable& r) {
                const std::vector<std::string> items =
                    dynamic_cast<const Record&>(r).intersectedItems();
                return items.empty() ? std::string("(none)") : items.front();
            }};
}

StringField imageIdentifier() {
    return {"imageoutputdata", "image_identifier contains a NUL character",
            boost::shared_ptr<Serializable>(new ImageOutputData()),
            [](Serializable& r, const std::string& s) {
                dynamic_cast<ImageOutputData&>(r).setImageIdentifier(s);
            },
            [](const Serializable& r) {
                return dynamic_cast<const ImageOutputData&>(r).imageIdentifier();
            }};
}

}  // namespace

// A string with a NUL byte could not read back (reading stops at the first NUL, and the record
// around it then fails its size check): the setters refuse it and leave the record as it was.
// Every other string reads back as set.
TEST(TerminatedStrings, SettersRefuseANulAndEveryOtherStringReadsBack) {
    const std::vector<StringField> fields = {
        objectName<GazeIntersectionOutputDataV1>(), objectName<GazeIntersectionOutputDataV2>(),
        objectName<HeadIntersectionOutputDataV1>(), label<GazeIntersectionOutputDataV3>(),
        label<GazeIntersectionOutputDataV4>(),      label<HeadIntersectionOutputDataV2>(),
        imageIdentifier()};
    for (const StringField& f : fields) {
        SCOPED_TRACE(int(f.record->objectID()));
        const Bytes before = encode(*f.record);
        for (const std::string& bad : {std::string("a\0b", 3), std::string(1, '\0'),
                                       std::string("Screen\0", 7)}) {
            EXPECT_USAGE_ERROR(f.set(*f.record, bad), f.module, f.reason);
            EXPECT_EQ(encode(*f.record), before);
        }
        for (const std::string& good : {std::string("Screen(1)"), std::string("\xC3\xA9\t\x01x"),
                                        std::string("x\xFF")}) {
            f.set(*f.record, good);
            int pos = 0;
            const Bytes bytes = encode(*f.record);
            const boost::shared_ptr<Serializable> read = SerializableFactory::newObject(bytes, pos);
            ASSERT_TRUE(read);
            EXPECT_EQ(f.get(*read), good);
        }
    }
}
