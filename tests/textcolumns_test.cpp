#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <sstream>

#include <eod/eod.h>

#include "eod/detail/textcolumns.h"
#include "recordtesting.h"
#include "testrecord.h"

using namespace tq::eod;
using namespace eodtest;

namespace {

typedef boost::shared_ptr<Serializable> Ptr;

template <class T>
std::string line(const T& value) {
    std::ostringstream os;
    detail::TextLine l(os);
    detail::Columns(os) << value;
    return os.str();
}

TEST(TextColumns, ValuesAsNumbers) {
    EXPECT_EQ(line(char(-1)), "-1");
    EXPECT_EQ(line(char(65)), "65");
    EXPECT_EQ(line(static_cast<unsigned char>(200)), "200");
    EXPECT_EQ(line(static_cast<signed char>(-5)), "-5");
    EXPECT_EQ(line(true), "1");
    EXPECT_EQ(line(false), "0");
    EXPECT_EQ(line(static_cast<short>(-300)), "-300");
    EXPECT_EQ(line(4000000000u), "4000000000");
    EXPECT_EQ(line(std::numeric_limits<long long>::min()), "-9223372036854775808");
    EXPECT_EQ(line(std::numeric_limits<unsigned long long>::max()), "18446744073709551615");
    EXPECT_EQ(line(0.1f), "0.1");
    EXPECT_EQ(line(1.0f), "1");
    EXPECT_EQ(line(-2.5), "-2.5");
    EXPECT_EQ(line(0.1), "0.1");
    EXPECT_EQ(line(1e300), "1e+300");
    EXPECT_EQ(line(std::string("a b")), "a b");
    EXPECT_EQ(line(std::vector<float>{1.5f, -2.0f, 0.25f}), "1.5\t-2\t0.25");
    EXPECT_EQ(line(std::vector<float>{}), "");
}

TEST(TextColumns, FloatsReadBackExactly) {
    for (float f : {0.1f, 1.0f / 3.0f, 123456.789f, std::numeric_limits<float>::min(),
                    std::numeric_limits<float>::max()}) {
        EXPECT_EQ(std::stof(line(f)), f);
    }
    for (double d : {0.1, 1.0 / 3.0, 2.0 / 7.0e-200}) {
        EXPECT_EQ(std::stod(line(d)), d);
    }
}

TEST(TextColumns, TabsBetweenColumnsAndNoneAtTheStartOfALine) {
    std::ostringstream os;
    for (int i = 0; i < 2; ++i) {
        detail::TextLine l(os);
        detail::Columns(os) << "A"
                            << "B";
        detail::Columns(os) << 3;
        os << '\n';
    }
    EXPECT_EQ(os.str(), "A\tB\t3\nA\tB\t3\n");
}

TEST(TextColumns, NestedCompositesPrintOwnColumnsThenSubObjects) {
    TestComposite top;
    const boost::shared_ptr<TestRecord<51>> middle(new TestRecord<51>(1));
    middle->addSubObject(Ptr(new TestRecord<52>(2)));
    top.addSubObject(middle);
    top.addSubObject(Ptr(new TestRecord<50>(0)));
    const boost::shared_ptr<TestRecord<53>> off(new TestRecord<53>(3));
    off->setSerializeEnabled(false);
    top.addSubObject(off);

    std::ostringstream os;
    top.printHeader(os);
    os << '\n';
    top.printLine(os);
    os << '\n';
    os << top << '\n';
    EXPECT_EQ(os.str(),
              "COMPOSITE\tVALUE_50\tVALUE_51\tVALUE_52\n"
              "c\t0\t1\t2\n"
              "c\t0\t1\t2\n");
}

TEST(TextColumns, EachStreamKeepsItsOwnLine) {
    std::ostringstream a, b;
    detail::TextLine la(a);
    detail::Columns(a) << 1;
    {
        detail::TextLine lb(b);
        detail::Columns(b) << 2;
    }
    detail::Columns(a) << 3;
    EXPECT_EQ(a.str(), "1\t3");
    EXPECT_EQ(b.str(), "2");
}

// printOwnHeader/printOwnData called on their own start a line of their own, however the
// stream was used before: no stray tab in front, and the same columns the record prints
// inside a whole line. For every registered record class.
TEST(TextColumns, OwnColumnsCalledAloneStartTheirOwnLine) {
    // What the call writes on a stream whose line already has columns.
    const auto onUsedStream = [](const std::function<void(std::ostream&)>& print) {
        std::ostringstream used;
        TestRecord<51>(5).printLine(used);
        used << '\n';
        const std::size_t start = used.str().size();
        print(used);
        return used.str().substr(start);
    };
    int composites = 0;
    for (int id = -128; id < 128; ++id) {
        const auto record = boost::dynamic_pointer_cast<SerializableComposite>(
            SerializableFactory::newObject(static_cast<char>(id)));
        if (!record) continue;
        ++composites;
        SCOPED_TRACE("object id " + std::to_string(id));
        ASSERT_EQ(record->numSubObjects(), 0u);
        EXPECT_EQ(onUsedStream([&](std::ostream& os) { record->printOwnHeader(os); }),
                  headerLine(*record));
        EXPECT_EQ(onUsedStream([&](std::ostream& os) { record->printOwnData(os); }),
                  valueLine(*record));
    }
    EXPECT_EQ(composites, 30);
}

// A record whose text output fails half way.
class FailingPrint : public TestRecord<54> {
public:
    void printOwnData(std::ostream& os) const override {
        detail::Columns(os) << 1;
        throw std::runtime_error("print failed");
    }
};

TEST(TextColumns, AFailedLineDoesNotSpillIntoTheNext) {
    std::ostringstream os;
    EXPECT_THROW(FailingPrint().printLine(os), std::runtime_error);
    os.str("");
    TestRecord<51>(5).printLine(os);
    EXPECT_EQ(os.str(), "5");
}

}  // namespace
