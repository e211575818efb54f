#ifndef EOD_TESTS_TESTRECORD_H
#define EOD_TESTS_TESTRECORD_H

// Small record classes for tests and benchmarks of code that only moves records around (the
// core, log files, streams), and a guard that registers such a class with the factory for a
// while. Free of GoogleTest, so that the benchmarks can use it too.

#include <eod/engineoutputbase.h>
#include <eod/serializable.h>
#include <eod/serializablecomposite.h>
#include <eod/serializablefactory.h>

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "eod/detail/bytecodec.h"
#include "eod/detail/fieldcodec.h"
#include "eod/detail/textcolumns.h"

namespace eodtest {

using Bytes = std::vector<unsigned char>;

// A plain leaf record whose data bytes are given. Its reader takes as many bytes as it holds
// (less `shortfall`), which is how tests make a reader disagree with the header.
class TestLeaf : public tq::eod::Serializable {
  public:
    static constexpr char THIS_OBJECT_ID = 100;

    explicit TestLeaf(char id = 100, Bytes data = Bytes()) : _id(id), _data(std::move(data)) {}

    char objectID() const override { return _id; }
    unsigned int numDataBytes() const override { return static_cast<unsigned int>(_data.size()); }
    bool serializeEnabled() const override { return _enabled; }
    TestLeaf* clone() const override { return new TestLeaf(*this); }
    void printLine(std::ostream& os) const override {
        tq::eod::detail::TextLine line(os);
        tq::eod::detail::Columns(os) << _data.size();
    }
    void printHeader(std::ostream& os) const override {
        tq::eod::detail::TextLine line(os);
        tq::eod::detail::Columns(os) << "LEAF_BYTES";
    }
    bool forbidDuplicateSiblings() const override { return _forbid_siblings; }

    const Bytes& data() const { return _data; }
    void setEnabled(bool enabled) { _enabled = enabled; }
    void setForbidSiblings(bool forbid) { _forbid_siblings = forbid; }
    void setShortfall(std::size_t n) { _shortfall = n; }

    // The field routines that record classes use, opened up for the codec tests.
    using Serializable::appendBuffer;
    using Serializable::appendRawBytes;
    using Serializable::readBuffer;
    using Serializable::readRawBytes;

  protected:
    void appendBuffer(Bytes& buffer) const override {
        tq::eod::detail::appendRaw(buffer, _data.data(), _data.size());
    }
    void readFromBuffer(const Bytes& buffer, int& read_pos) override {
        tq::eod::detail::readRaw(buffer, read_pos, _data.data(), _data.size() - _shortfall);
    }

  private:
    char _id;
    Bytes _data;
    bool _enabled = true;
    bool _forbid_siblings = true;
    std::size_t _shortfall = 0;
};

// An engine output record with one 4-byte field, under any id the test needs; a composite
// holds one of an id unless ALLOW_SIBLINGS.
template <char ID, bool ALLOW_SIBLINGS = false>
class TestRecord : public tq::eod::EngineOutputBase {
  public:
    static constexpr char THIS_OBJECT_ID = ID;

    explicit TestRecord(int value = 0) : _value(value) {}

    char objectID() const override { return ID; }
    TestRecord* clone() const override { return new TestRecord(*this); }
    bool forbidDuplicateSiblings() const override { return !ALLOW_SIBLINGS; }

    int value() const { return _value; }
    void setValue(int value) { _value = value; }

    void printOwnHeader(std::ostream& os) const override {
        tq::eod::detail::Columns(os) << "VALUE_" + std::to_string(int(ID));
    }
    void printOwnData(std::ostream& os) const override { tq::eod::detail::Columns(os) << _value; }

  protected:
    void appendEngineSpecificData(Bytes& buffer) const override {
        tq::eod::detail::FieldWriter w{buffer};
        visitFields(*this, w);
    }
    void readEngineSpecificData(const Bytes& buffer, int& read_pos) override {
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
    }

    int _value;
};

// A plain composite (no own fields) whose duplicate policy the test chooses.
class TestComposite : public tq::eod::SerializableComposite {
  public:
    static constexpr char THIS_OBJECT_ID = 110;

    explicit TestComposite(bool allow_duplicates = true) : _allow_duplicates(allow_duplicates) {}

    char objectID() const override { return THIS_OBJECT_ID; }
    TestComposite* clone() const override { return new TestComposite(*this); }
    void printOwnHeader(std::ostream& os) const override {
        tq::eod::detail::Columns(os) << "COMPOSITE";
    }
    void printOwnData(std::ostream& os) const override { tq::eod::detail::Columns(os) << "c"; }

  protected:
    bool allowDuplicateSubObjects() const override { return _allow_duplicates; }

  private:
    bool _allow_duplicates;
};

// The creation function of T, as the factory takes it.
template <class T>
boost::shared_ptr<tq::eod::Serializable> create() {
    return boost::shared_ptr<tq::eod::Serializable>(new T());
}

// Registers T (through create<T>) for its object id while the guard lives and puts back what
// was registered before (a library class of the same id, say).
template <class T>
class ScopedObjectType {
  public:
    ScopedObjectType()
        : _previous(tq::eod::SerializableFactory::unregisterObjectType(T::THIS_OBJECT_ID)) {
        tq::eod::SerializableFactory::registerObjectType(T::THIS_OBJECT_ID, &create<T>);
    }
    ~ScopedObjectType() {
        tq::eod::SerializableFactory::unregisterObjectType(T::THIS_OBJECT_ID);
        if (_previous) {
            tq::eod::SerializableFactory::registerObjectType(T::THIS_OBJECT_ID, _previous);
        }
    }
    ScopedObjectType(const ScopedObjectType&) = delete;
    ScopedObjectType& operator=(const ScopedObjectType&) = delete;

  private:
    tq::eod::SerializableFactory::CreationFunction _previous;
};

}  // namespace eodtest

#endif
