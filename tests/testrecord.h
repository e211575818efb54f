#ifndef EOD_TESTS_TESTRECORD_H
#define EOD_TESTS_TESTRECORD_H

// A small engine output record of any object id, for tests and benchmarks of code that only
// moves records around (log files, streams), and a guard that registers such a class with
// the factory for a while.

#include <eod/engineoutputbase.h>
#include <eod/serializablefactory.h>

#include <boost/shared_ptr.hpp>
#include <ostream>
#include <vector>

#include "eod/fieldcodec.h"
#include "eod/textcolumns.h"

namespace eodtest {

// Fields: a counter and a 3D float vector (16 bytes).
template <char ID>
class TestRecord : public tq::eod::EngineOutputBase {
  public:
    static const char THIS_OBJECT_ID = ID;

    TestRecord() = default;
    explicit TestRecord(unsigned int value)
        : _value(value), _vector{0.5f * float(value), 1.0f, -2.0f} {}

    char objectID() const override { return ID; }
    TestRecord* clone() const override { return new TestRecord(*this); }
    unsigned int value() const { return _value; }

    void printOwnHeader(std::ostream& os) const override {
        tq::eod::detail::Columns(os) << "VALUE"
                                     << "X"
                                     << "Y"
                                     << "Z";
    }
    void printOwnData(std::ostream& os) const override {
        tq::eod::detail::Columns(os) << _value << _vector;
    }

  protected:
    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override {
        tq::eod::detail::FieldWriter w{buffer};
        visitFields(*this, w);
    }
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override {
        tq::eod::detail::FieldReader r{buffer, read_pos};
        visitFields(*this, r);
    }
    unsigned int numEngineSpecificDataBytes() const override {
        tq::eod::detail::FieldSizer s;
        visitFields(*this, s);
        return s.bytes;
    }

  private:
    template <class Self, class V>
    static void visitFields(Self& self, V& v) {
        v(self._value);
        v(self._vector);
    }

    unsigned int _value = 0;
    std::vector<float> _vector = std::vector<float>(3, 0.0f);
};

// Registers T for its object id while the guard lives and puts back what was registered
// before (a library class of the same id, say).
template <class T>
class ScopedObjectType {
  public:
    ScopedObjectType()
        : _previous(tq::eod::SerializableFactory::unregisterObjectType(T::THIS_OBJECT_ID)) {
        tq::eod::SerializableFactory::registerObjectType(T::THIS_OBJECT_ID, &create);
    }
    ~ScopedObjectType() {
        tq::eod::SerializableFactory::unregisterObjectType(T::THIS_OBJECT_ID);
        if (_previous)
            tq::eod::SerializableFactory::registerObjectType(T::THIS_OBJECT_ID, _previous);
    }
    ScopedObjectType(const ScopedObjectType&) = delete;
    ScopedObjectType& operator=(const ScopedObjectType&) = delete;

  private:
    static boost::shared_ptr<tq::eod::Serializable> create() {
        return boost::shared_ptr<tq::eod::Serializable>(new T());
    }

    tq::eod::SerializableFactory::CreationFunction _previous;
};

}  // namespace eodtest

#endif
