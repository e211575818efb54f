#ifndef EOD_SERIALIZABLE_H
#define EOD_SERIALIZABLE_H

// Byte layout of every record:
//
//   offset 0  object id            1 byte, signed char (THIS_OBJECT_ID of the class)
//   offset 1  data size            2 bytes, big-endian, unsigned
//   offset 3  extended data size   4 bytes, big-endian; present only when the 2-byte
//                                  field holds 0xFFFF (sizes of 65535 and more)
//   then      the data bytes       what the record's appendBuffer writes
//
// Numbers of 2, 4 and 8 bytes are big-endian (an 8-byte value high half first); floats
// and doubles travel as their IEEE-754 bit patterns; a boolean is one byte (non-zero
// reads as true); a string is its bytes and a terminating 0x00.

#include <cstddef>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

namespace tq {
namespace eod {

class SerializableComposite;

class Serializable {
public:
    // Reserved object ids; no record class of the library uses them.
    static constexpr char ERROR_ID = 0;
    static constexpr char FACE_STATE_ID_V1_0 = 1;
    static constexpr char WSPHERE_ID = 2;
    static constexpr char WPLANE_ID = 3;
    static constexpr char FAMOUS_PLUGIN_ID = 5;
    static constexpr char FACE_STATE_ID_V2_0 = 6;
    static constexpr char FACE_STATE_ID_V3_0 = 7;
    static constexpr char FACE_STATE_ID_V3_0_SERIAL = 8;
    static constexpr char TEST_ID = 127;

    // Status bits set by the ...WithStatus readers; callers clear the word first.
    static constexpr unsigned int STATUS_UNKNOWN_OBJECT_ID = 1;
    static constexpr unsigned int STATUS_NOT_ENOUGH_DATA = 4;
    static constexpr unsigned int STATUS_UNDECODABLE = 8;

    // Records read from bytes may nest at most this deep (a frame holding a face set holding
    // an eye record is three levels); deeper bytes are refused as undecodable rather than
    // allowed to exhaust the stack.
    static constexpr unsigned int MAX_NESTING_DEPTH = 64;

    Serializable() = default;
    Serializable(const Serializable&) = default;
    Serializable& operator=(const Serializable&) = default;
    virtual ~Serializable();

    virtual char objectID() const = 0;
    // Number of data bytes that appendBuffer writes (the header not included).
    virtual unsigned int numDataBytes() const = 0;
    // A record that returns false refuses serialize() and is left out of its parent.
    virtual bool serializeEnabled() const { return true; }
    // A new heap copy of the same dynamic type; composites copy their sub-records deeply.
    virtual Serializable* clone() const = 0;
    // One line of tab-separated values / the matching column labels, without end of line.
    virtual void printLine(std::ostream& os) const = 0;
    virtual void printHeader(std::ostream& os) const = 0;
    // Asks a parent composite to refuse a second sub-object with this object id.
    virtual bool forbidDuplicateSiblings() const { return true; }

    // Appends the header and the data bytes, reserving the whole size first so the buffer
    // grows at most once. Throws SerializableError when serializeEnabled() is false.
    void serialize(std::vector<unsigned char>& buffer) const;

    // Reads one complete record of this object's id at read_pos. Returns false, without
    // moving read_pos, while the buffer does not yet hold the whole record. read_pos moves
    // only on success.
    bool unSerialize(const std::vector<unsigned char>& buffer, int& read_pos);
    // As unSerialize, but reports an incomplete record as status bit 4 and undecodable data
    // as bit 8 instead of throwing. A wrong object id and a negative position still throw.
    void unSerializeWithStatus(const std::vector<unsigned char>& buffer, int& read_pos,
                               unsigned int& status);

    unsigned int numTotalBytes() const;
    void writeToBinaryStream(std::ostream& stream) const;

    static void writeHeader(std::vector<unsigned char>& buffer, char object_id,
                            unsigned int data_size);
    // read_pos points just after the id byte. True when the size field and all the data
    // bytes it announces are present; read_pos is then just after the size field. On false
    // read_pos may have moved: callers work on a copy.
    static bool readDataSizeHeader(const std::vector<unsigned char>& buffer, int& read_pos,
                                   unsigned int* data_size);
    static unsigned int minHeaderBytes() { return 3; }
    static unsigned int numHeaderBytes(unsigned int data_size) {
        return extendedHeaderSize(data_size) ? 7 : 3;
    }
    static bool extendedHeaderSize(unsigned int data_size) {
        return data_size >= extendedHeaderSizeMagicCookie();
    }
    static unsigned int extendedHeaderSizeMagicCookie() { return 65535; }

    // Records live on the ordinary heap; these only forward to it.
    static void* operator new(std::size_t size);
    static void* operator new(std::size_t size, const char* file, int line);
    static void operator delete(void* p) noexcept;
    static void operator delete(void* p, const char* file, int line) noexcept;

protected:
    virtual void appendBuffer(std::vector<unsigned char>& buffer) const = 0;
    virtual void readFromBuffer(const std::vector<unsigned char>& buffer, int& read_pos) = 0;
    // Default: readFromBuffer, with any exception turned into status bit 8.
    virtual void readFromBufferWithStatus(const std::vector<unsigned char>& buffer, int& read_pos,
                                          unsigned int& status);

    // Field routines for record classes, all on the library's one big-endian codec.
    static void appendBuffer(std::vector<unsigned char>& buffer, bool value);
    static void readBuffer(const std::vector<unsigned char>& buffer, int& read_pos, bool& value);
    static void appendBuffer(std::vector<unsigned char>& buffer, const std::string& value);
    static void readBuffer(const std::vector<unsigned char>& buffer, int& read_pos,
                           std::string& value);
    // A literal is a terminated string. Any other pointer is refused at compile time: it would
    // otherwise be taken as a number (its address) or converted to bool.
    static void appendBuffer(std::vector<unsigned char>& buffer, const char* value);
    template <class T>
    static void appendBuffer(std::vector<unsigned char>& buffer, T* value) = delete;
    template <class T, class = std::enable_if_t<std::is_arithmetic<T>::value>>
    static void appendBuffer(std::vector<unsigned char>& buffer, T value) {
        appendNBytes(buffer, reinterpret_cast<const char*>(&value), static_cast<int>(sizeof(T)));
    }
    template <class T, class = std::enable_if_t<std::is_arithmetic<T>::value>>
    static void readBuffer(const std::vector<unsigned char>& buffer, int& read_pos, T& value) {
        readNBytes(buffer, read_pos, reinterpret_cast<char*>(&value), static_cast<int>(sizeof(T)));
    }
    static void appendRawBytes(std::vector<unsigned char>& buffer, const char* bytes,
                               unsigned int n);
    static void readRawBytes(const std::vector<unsigned char>& buffer, int& read_pos,
                             unsigned char* array, unsigned int n);

private:
    friend class SerializableComposite;

    // The part both read forms share: a usage error for a negative position, the id check
    // (which throws in both), and the size header. False when the header or the data it
    // announces is not all in the buffer; else p is just after the header.
    bool openRecord(const std::vector<unsigned char>& buffer, int& p, unsigned int& data_size) const;

    // Header and data of a sub-record. The size field is filled in after the data is
    // written, so a sub-record is sized beforehand only when its parent is 65535 bytes or
    // longer (it may then need the long header); nested records are not sized once per level.
    void appendRecord(std::vector<unsigned char>& buffer) const;
    void appendRecord(std::vector<unsigned char>& buffer, bool long_header) const;

    static void appendNBytes(std::vector<unsigned char>& buffer, const char* bytes, int num_bytes);
    static void readNBytes(const std::vector<unsigned char>& buffer, int& read_pos, char* bytes,
                           int num_bytes);
};

// Writes the record's printLine.
std::ostream& operator<<(std::ostream& os, const Serializable& record);

// Left-pads s with spaces to `length` characters; a longer string is returned unchanged.
std::string padString(const std::string& s, int length);
// s from its first non-space character on.
std::string unPadString(const std::string& s);

}  // namespace eod
}  // namespace tq

#endif
