#ifndef EOD_IO_DETAIL_DECODEDQUEUE_H
#define EOD_IO_DETAIL_DECODEDQUEUE_H

#include <eod/io/decoderdata.h>
#include <eod/serializable.h>

#include <cstddef>
#include <deque>
#include <utility>

namespace tq {
namespace eod {
namespace io {
namespace detail {

// The items a record decoder has rebuilt and not yet handed out, each with the status bits
// it adds when taken.
class DecodedQueue {
  public:
    void push(DecoderData item, unsigned int status) {
        _items.push_back(Item{std::move(item), status});
    }

    // The oldest item and its status bits; an empty queue sets bit 4 and gives an empty
    // item.
    DecoderData takeNext(unsigned int& status) {
        if (_items.empty()) {
            status |= Serializable::STATUS_NOT_ENOUGH_DATA;
            return DecoderData();
        }
        Item item = std::move(_items.front());
        _items.pop_front();
        status |= item.status;
        return std::move(item.data);
    }

    bool empty() const { return _items.empty(); }
    std::size_t size() const { return _items.size(); }

  private:
    struct Item {
        DecoderData data;
        unsigned int status;
    };
    std::deque<Item> _items;
};

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
