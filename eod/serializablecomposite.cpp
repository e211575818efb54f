#include <eod/serializablecomposite.h>

#include <algorithm>
#include <cassert>
#include <iterator>
#include <limits>

#include <eod/serializablefactory.h>

#include "eod/detail/bytecodec.h"
#include "eod/detail/textcolumns.h"

namespace tq {
namespace eod {

SerializableComposite::SerializableComposite(const SerializableComposite& other)
    : Serializable(other) {
    copyFrom(other);
}

SerializableComposite& SerializableComposite::operator=(const SerializableComposite& other) {
    if (this != &other) {
        Serializable::operator=(other);
        copyFrom(other);
    }
    return *this;
}

SerializableComposite::~SerializableComposite() = default;

void SerializableComposite::copyFrom(const SerializableComposite& other) {
    if (this == &other) return;
    SubObjectMap copies;
    copies.reserve(other._sub_objects.size());
    for (const auto& entry : other._sub_objects) {
        assert(entry.second);
        copies.emplace_hint(copies.end(), entry.first,
                            boost::shared_ptr<Serializable>(entry.second->clone()));
    }
    _sub_objects.swap(copies);
}

unsigned int SerializableComposite::numDataBytes() const {
    unsigned int n = numOwnDataBytes() + 1;
    for (const auto& entry : _sub_objects) {
        if (entry.second->serializeEnabled()) n += entry.second->numTotalBytes();
    }
    return n;
}

void SerializableComposite::printLine(std::ostream& os) const {
    detail::TextLine line(os);
    printOwnData(os);
    for (const auto& entry : _sub_objects) {
        if (entry.second->serializeEnabled()) entry.second->printLine(os);
    }
}

void SerializableComposite::printHeader(std::ostream& os) const {
    detail::TextLine line(os);
    printOwnHeader(os);
    for (const auto& entry : _sub_objects) {
        if (entry.second->serializeEnabled()) entry.second->printHeader(os);
    }
}

void SerializableComposite::addSubObject(const boost::shared_ptr<Serializable>& object) {
    doAddSubObject(object);
}

void SerializableComposite::doAddSubObject(const boost::shared_ptr<Serializable>& object) {
    insertSubObject(object);
}

void SerializableComposite::insertSubObject(const boost::shared_ptr<Serializable>& object) {
    if (!object) {
        throw SerializableError("SerializableComposite::addSubObject - Attempted to null object");
    }
    if (object.get() == this) {
        throw SerializableError(
            "SerializableComposite::addSubObject - Attempted to add a SerializableComposite "
            "object to itself");
    }
    if (_sub_objects.size() >= MAX_SUB_OBJECTS) {
        throw SerializableError("SerializableComposite::addSubObject - Too many sub-objects");
    }
    if (object->forbidDuplicateSiblings() || !allowDuplicateSubObjects()) {
        throwIfDuplicate(*object);
    }
    // Inserting with the end as hint places the entry after those with an equal key, at
    // once when it belongs at the end, as sub-records read from bytes do.
    _sub_objects.insert(_sub_objects.cend(), SubObjectMap::value_type(object->objectID(), object));
}

void SerializableComposite::throwIfDuplicate(const Serializable& object) const {
    if (_sub_objects.count(object.objectID()) != 0) throwDuplicateSubObject();
}

void SerializableComposite::throwDuplicateSubObject() {
    throw SerializableError(
        "SerializableComposite::addSubObject - Sub-object already exists in this composite");
}

void SerializableComposite::throwTypeMismatch() {
    throw SerializableError(
        "SerializableComposite::subObject() - programming error. ID does not match object type");
}

void SerializableComposite::removeSubObject(const Serializable& object) {
    for (auto it = _sub_objects.begin(); it != _sub_objects.end(); ++it) {
        if (it->second.get() == &object) {
            _sub_objects.erase(it);
            return;
        }
    }
    throw SerializableError("SerializableComposite::removeSubObject - Sub object not present");
}

boost::shared_ptr<Serializable> SerializableComposite::removeSubObject(char id) {
    return removeSubObjectAtIndex(id, 0);
}

SerializableComposite::SubObjectMap::iterator SerializableComposite::findAtIndex(
    char id, unsigned char index) {
    // Entries of one id stand together in the flat map: the index-th is `index` places after
    // the first, if it still has the id.
    const auto first = _sub_objects.lower_bound(id);
    if (_sub_objects.end() - first <= index) return _sub_objects.end();
    const auto it = first + index;
    return it->first == id ? it : _sub_objects.end();
}

boost::shared_ptr<Serializable> SerializableComposite::removeSubObjectAtIndex(char id,
                                                                              unsigned char index) {
    const auto it = findAtIndex(id, index);
    if (it == _sub_objects.end()) return boost::shared_ptr<Serializable>();
    boost::shared_ptr<Serializable> removed = it->second;
    _sub_objects.erase(it);
    return removed;
}

boost::shared_ptr<Serializable> SerializableComposite::subObject(char id) {
    return subObjectAtIndex(id, 0);
}

boost::shared_ptr<Serializable const> SerializableComposite::subObject(char id) const {
    return subObjectAtIndex(id, 0);
}

boost::shared_ptr<Serializable> SerializableComposite::subObjectAtIndex(char id,
                                                                       unsigned char index) {
    const auto it = findAtIndex(id, index);
    return it == _sub_objects.end() ? boost::shared_ptr<Serializable>() : it->second;
}

boost::shared_ptr<Serializable const> SerializableComposite::subObjectAtIndex(
    char id, unsigned char index) const {
    return const_cast<SerializableComposite*>(this)->subObjectAtIndex(id, index);
}

SerializableComposite::SubObjects SerializableComposite::subObjects() {
    SubObjects result;
    result.reserve(_sub_objects.size());
    for (const auto& entry : _sub_objects) result.push_back(entry.second);
    return result;
}

SerializableComposite::ConstSubObjects SerializableComposite::subObjects() const {
    ConstSubObjects result;
    result.reserve(_sub_objects.size());
    for (const auto& entry : _sub_objects) result.push_back(entry.second);
    return result;
}

SerializableComposite::SubObjects SerializableComposite::subObjects(char id) {
    SubObjects result;
    const auto range = _sub_objects.equal_range(id);
    for (auto it = range.first; it != range.second; ++it) result.push_back(it->second);
    return result;
}

SerializableComposite::ConstSubObjects SerializableComposite::subObjects(char id) const {
    ConstSubObjects result;
    const auto range = _sub_objects.equal_range(id);
    for (auto it = range.first; it != range.second; ++it) result.push_back(it->second);
    return result;
}

bool SerializableComposite::hasSubObjectID(char id) const {
    return _sub_objects.find(id) != _sub_objects.end();
}

unsigned char SerializableComposite::numSubObjects() const {
    assert(_sub_objects.size() <= std::numeric_limits<unsigned char>::max());
    return static_cast<unsigned char>(_sub_objects.size());
}

unsigned char SerializableComposite::numSubObjects(char id) const {
    return static_cast<unsigned char>(_sub_objects.count(id));
}

unsigned char SerializableComposite::numValidSubObjects() const {
    unsigned char n = 0;
    for (const auto& entry : _sub_objects) {
        if (entry.second->serializeEnabled()) ++n;
    }
    return n;
}

void SerializableComposite::clearSubObjects() { _sub_objects.clear(); }

void SerializableComposite::appendBuffer(std::vector<unsigned char>& buffer) const {
    appendOwnData(buffer);
    // The count of valid sub-objects, filled in as they are written rather than counted in
    // a pass of its own.
    const std::size_t count_pos = buffer.size();
    buffer.push_back(0);
    unsigned char count = 0;
    for (const auto& entry : _sub_objects) {
        if (!entry.second->serializeEnabled()) continue;
        entry.second->appendRecord(buffer);
        ++count;
    }
    buffer[count_pos] = count;
}

unsigned int SerializableComposite::readOwnDataAndCount(const std::vector<unsigned char>& buffer,
                                                        int& read_pos) {
    clearSubObjects();
    readOwnData(buffer, read_pos);
    if (read_pos < 0 || static_cast<std::size_t>(read_pos) >= buffer.size()) {
        throw SerializableError(
            "SerializableComposite::readFromBuffer() - data_size in header wrong, too much data "
            "read.");
    }
    const unsigned int count = buffer[static_cast<std::size_t>(read_pos++)];
    // Every sub-record takes at least a header, so the bytes present bound the room needed.
    _sub_objects.reserve(
        std::min<std::size_t>(count, detail::bytesRemaining(buffer, read_pos) / minHeaderBytes()));
    return count;
}

void SerializableComposite::storeReadSubObject(const boost::shared_ptr<Serializable>& object) {
    if (object && object->serializeEnabled()) insertSubObject(object);
}

boost::shared_ptr<Serializable> SerializableComposite::readSubObject(
    const std::vector<unsigned char>& buffer, int& read_pos) {
    return SerializableFactory::newObject(buffer, read_pos);
}

boost::shared_ptr<Serializable> SerializableComposite::readSubObjectWithStatus(
    const std::vector<unsigned char>& buffer, int& read_pos, unsigned int& status) {
    return SerializableFactory::newObjectWithStatus(buffer, read_pos, status);
}

void SerializableComposite::readFromBuffer(const std::vector<unsigned char>& buffer,
                                           int& read_pos) {
    const unsigned int count = readOwnDataAndCount(buffer, read_pos);
    for (unsigned int i = 0; i < count; ++i) {
        storeReadSubObject(readSubObject(buffer, read_pos));
    }
}

void SerializableComposite::readFromBufferWithStatus(const std::vector<unsigned char>& buffer,
                                                     int& read_pos, unsigned int& status) {
    try {
        const unsigned int count = readOwnDataAndCount(buffer, read_pos);
        for (unsigned int i = 0; i < count; ++i) {
            unsigned int sub_status = 0;
            boost::shared_ptr<Serializable> object =
                readSubObjectWithStatus(buffer, read_pos, sub_status);
            status |= sub_status;
            // A sub-record that is cut short or undecodable leaves read_pos where it was;
            // reading on would only meet the same bytes again.
            if (sub_status & (STATUS_NOT_ENOUGH_DATA | STATUS_UNDECODABLE)) return;
            storeReadSubObject(object);
        }
    } catch (...) {
        status |= STATUS_UNDECODABLE;
    }
}

}  // namespace eod
}  // namespace tq
