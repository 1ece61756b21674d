#pragma once

// One direction of the wire between the two switches of a pair: brings each message to the other
// end a while later, or loses, repeats or holds it up, as its faults have it.
//
// Ownership: holds the scheduler; borrows the faults and whatever `deliver` needs, which outlive
// it. Messages under way go with it. Re-entrancy: whoever gets a message may send others.

#include "platform/Kel/TaskScheduler.h"
#include "platform/Nodo/IntfId.h"
#include "platform/Vex/Ptr.h"
#include "replay/pair/WireFaults.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace Replay::Peering {

enum class Content : std::uint8_t { request, response };

/// One change of what a switch asks of its peer, or has answered.
struct Message {
   Content content = Content::request;
   Nodo::IntfId lag;
   std::optional< std::uint32_t > token; // nothing: it was withdrawn
   std::uint64_t sequence = 0; // of sending, on this wire, from 1; a copy has that of its original
};

class Wire {
 public:
   using Deliver = std::function< void( const Message & message ) >;

   Wire( Vex::Ptr< Kel::TaskScheduler > scheduler, WireFaults & faults, Deliver deliver );
   Wire( const Wire & ) = delete;
   Wire & operator=( const Wire & ) = delete;
   Wire( Wire && ) = delete;
   Wire & operator=( Wire && ) = delete;
   ~Wire();

   /// Numbers the message, sends it, and tells what becomes of it.
   Fate send( Message & message );

   /// How many messages have not arrived yet, copies counted.
   std::size_t underWay() const noexcept { return underWay_.size(); }

 private:
   class Arrival;

   void deliver( const Arrival & arrival );

   Vex::Ptr< Kel::TaskScheduler > scheduler_;
   WireFaults & faults_;
   Deliver deliver_;
   std::uint64_t sent_ = 0;
   std::vector< Vex::Ptr< Arrival > > underWay_; // in the order in which they were sent
};

} // namespace Replay::Peering
