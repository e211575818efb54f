#ifndef EOD_SERIALIZABLECOMPOSITE_H
#define EOD_SERIALIZABLECOMPOSITE_H

// Data bytes of a composite: its own fields (appendOwnData), then a one-byte count of the
// valid sub-objects, then each valid sub-object as a complete record in ascending object id
// order (insertion order among equal ids). A sub-object is valid when serializeEnabled().

#include <ostream>
#include <vector>

#include <boost/container/flat_map.hpp>
#include <boost/pointer_cast.hpp>
#include <boost/shared_ptr.hpp>

#include <eod/serializable.h>
#include <eod/serializableerror.h>

namespace tq {
namespace eod {

class SerializableComposite : public Serializable {
public:
    typedef std::vector<boost::shared_ptr<Serializable>> SubObjects;
    typedef std::vector<boost::shared_ptr<Serializable const>> ConstSubObjects;

    static constexpr unsigned int MAX_SUB_OBJECTS = 255;

    SerializableComposite() = default;
    // Deep copies: sub-objects are cloned.
    SerializableComposite(const SerializableComposite& other);
    SerializableComposite& operator=(const SerializableComposite& other);
    ~SerializableComposite() override;
    void copyFrom(const SerializableComposite& other);

    unsigned int numDataBytes() const override;
    void printLine(std::ostream& os) const override;
    void printHeader(std::ostream& os) const override;

    virtual unsigned int numOwnDataBytes() const { return 0; }
    virtual void printOwnHeader(std::ostream& os) const = 0;
    virtual void printOwnData(std::ostream& os) const = 0;

    // Calls the doAddSubObject hook, which subclasses use to restrict what they accept.
    void addSubObject(const boost::shared_ptr<Serializable>& object);
    // Null, self, the 255 limit and the duplicate rule are checked; on failure the
    // composite keeps what it had.
    void insertSubObject(const boost::shared_ptr<Serializable>& object);

    void removeSubObject(const Serializable& object);
    boost::shared_ptr<Serializable> removeSubObject(char id);
    boost::shared_ptr<Serializable> removeSubObjectAtIndex(char id, unsigned char index);

    boost::shared_ptr<Serializable> subObject(char id);
    boost::shared_ptr<Serializable const> subObject(char id) const;
    boost::shared_ptr<Serializable> subObjectAtIndex(char id, unsigned char index);
    boost::shared_ptr<Serializable const> subObjectAtIndex(char id, unsigned char index) const;
    SubObjects subObjects();
    ConstSubObjects subObjects() const;
    SubObjects subObjects(char id);
    ConstSubObjects subObjects(char id) const;

    bool hasSubObjectID(char id) const;
    unsigned char numSubObjects() const;
    unsigned char numSubObjects(char id) const;
    unsigned char numValidSubObjects() const;
    void clearSubObjects();

    // The first sub-object of `id` as a T, or null when there is none. Throws
    // SerializableError "SerializableComposite::subObject() - programming error. ID does not
    // match object type" when the object stored under the id is not a T.
    template <class T>
    boost::shared_ptr<T> typedSubObject(char id) {
        return checkedCast<T>(subObject(id));
    }
    template <class T>
    boost::shared_ptr<T const> typedSubObject(char id) const {
        return checkedCast<T const>(subObject(id));
    }
    template <class T>
    boost::shared_ptr<T> typedSubObjectAtIndex(char id, unsigned char index) {
        return checkedCast<T>(subObjectAtIndex(id, index));
    }
    template <class T>
    boost::shared_ptr<T const> typedSubObjectAtIndex(char id, unsigned char index) const {
        return checkedCast<T const>(subObjectAtIndex(id, index));
    }
    // The first sub-object of T's id, added as a new default T when missing.
    template <class T>
    boost::shared_ptr<T> typedSubObjectAddIfMissing() {
        boost::shared_ptr<T> existing = typedSubObject<T>(T::THIS_OBJECT_ID);
        if (existing) return existing;
        boost::shared_ptr<T> added(new T());
        addSubObject(added);
        return added;
    }

protected:
    virtual void appendOwnData(std::vector<unsigned char>&) const {}
    virtual void readOwnData(const std::vector<unsigned char>&, int&) {}
    virtual void doAddSubObject(const boost::shared_ptr<Serializable>& object);
    virtual bool allowDuplicateSubObjects() const { return true; }

    // Rebuild the sub-record whose bytes start at read_pos while this composite is read, as
    // SerializableFactory::newObject and newObjectWithStatus do (and by default through
    // them: same results, messages and status bits). A composite whose children the registry
    // cannot build overrides both.
    virtual boost::shared_ptr<Serializable> readSubObject(const std::vector<unsigned char>& buffer,
                                                          int& read_pos);
    virtual boost::shared_ptr<Serializable> readSubObjectWithStatus(
        const std::vector<unsigned char>& buffer, int& read_pos, unsigned int& status);

    void appendBuffer(std::vector<unsigned char>& buffer) const override;
    void readFromBuffer(const std::vector<unsigned char>& buffer, int& read_pos) override;
    void readFromBufferWithStatus(const std::vector<unsigned char>& buffer, int& read_pos,
                                  unsigned int& status) override;

    void throwIfDuplicate(const Serializable& object) const;
    [[noreturn]] static void throwDuplicateSubObject();

private:
    // Sorted by id, equal ids in insertion order. A flat map rather than a tree: a record
    // holds a handful of sub-objects, and one block per composite instead of one node per
    // sub-object makes reading a frame markedly cheaper.
    typedef boost::container::flat_multimap<char, boost::shared_ptr<Serializable>> SubObjectMap;

    // The entry of the index-th sub-object of `id`, or end() when there are fewer.
    SubObjectMap::iterator findAtIndex(char id, unsigned char index);

    template <class T, class P>
    static boost::shared_ptr<T> checkedCast(const boost::shared_ptr<P>& p) {
        if (!p) return boost::shared_ptr<T>();
        boost::shared_ptr<T> typed = boost::dynamic_pointer_cast<T>(p);
        if (!typed) throwTypeMismatch();
        return typed;
    }
    [[noreturn]] static void throwTypeMismatch();

    // Reads the own fields and the count byte; returns the count.
    unsigned int readOwnDataAndCount(const std::vector<unsigned char>& buffer, int& read_pos);
    // Stores a sub-record rebuilt from bytes, unless it is null or switched off.
    void storeReadSubObject(const boost::shared_ptr<Serializable>& object);

    SubObjectMap _sub_objects;
};

}  // namespace eod
}  // namespace tq

#endif
