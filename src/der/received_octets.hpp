// The octets of a record: those that it was decoded from, or those that it is written with.
#pragma once

#include "der/received.hpp"
#include "der/value_kinds.hpp"

namespace tlx {

/// Of a record with a member `received`, as long as neither of the two changes.
class RecordOctets {
  public:
    /// False when memory runs out and when the record cannot be written. There are no octets then.
    template <typename Record>
    [[nodiscard]] bool read(const Record &record) noexcept {
        if (record.received == nullptr) {
            Codec<Record>::encode(written_, &record);
            if (written_.ok()) octets_ = written_.bytes();
            return written_.ok();
        }
        joined_.reset(join_received(record.received));
        if (joined_) octets_ = {joined_.get(), received_size(record.received)};
        return joined_ != nullptr;
    }
    /// Whether reading failed for want of memory.
    [[nodiscard]] bool out_of_memory() const noexcept {
        return octets_.empty() && (written_.ok() || written_.out_of_memory());
    }
    [[nodiscard]] Bytes bytes() const noexcept { return octets_; }

  private:
    Encoder written_;
    OwnedOctets<u8> joined_;
    Bytes octets_;
};

}  // namespace tlx
