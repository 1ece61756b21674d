#pragma once

// The exchange between the two switches of a pair: carries each change of a switch's install
// requests to the other one's responder, and the answers back into the install responses. It
// carries changes, not states: what a wire loses stays lost, and what it holds up arrives as old
// news.
//
// Ownership: holds the entities of both switches that it works on; borrows `events`, which outlives
// it. Requests that were there before are not carried.

#include "interlock-model/Mlag/AclInstallResponse.h"
#include "platform/Kel/TaskScheduler.h"
#include "platform/Vex/Ptr.h"
#include "replay/Entities.h"
#include "replay/pair/Responder.h"
#include "replay/pair/Side.h"
#include "replay/pair/Wire.h"
#include "replay/pair/WireFaults.h"

#include <array>
#include <cstddef>
#include <memory>

namespace Replay::Peering {

/// Is told what happens on the wires, while it happens.
class ExchangeEvents {
 public:
   ExchangeEvents() = default;
   ExchangeEvents( const ExchangeEvents & ) = delete;
   ExchangeEvents & operator=( const ExchangeEvents & ) = delete;
   ExchangeEvents( ExchangeEvents && ) = delete;
   ExchangeEvents & operator=( ExchangeEvents && ) = delete;
   virtual ~ExchangeEvents() = default;

   virtual void sent( Side from, const Message & message, const Fate & fate ) = 0;
   /// Just before it is acted upon.
   virtual void arriving( Side at, const Message & message ) = 0;
   /// It has been acted upon.
   virtual void arrived( Side at, const Message & message ) = 0;
};

class Exchange {
 public:
   Exchange( const Vex::Ptr< Kel::TaskScheduler > & scheduler,
             const Entities & left,
             const Entities & right,
             ExchangeEvents & events );
   Exchange( const Exchange & ) = delete;
   Exchange & operator=( const Exchange & ) = delete;
   Exchange( Exchange && ) = delete;
   Exchange & operator=( Exchange && ) = delete;
   ~Exchange();

   /// Of what this switch sends.
   WireFaults & faults( Side from ) noexcept;
   Responder & responder( Side side ) noexcept;
   /// How many messages have not arrived yet.
   std::size_t underWay() const noexcept;

 private:
   class End;

   void arrive( Side at, const Message & message );

   ExchangeEvents & events_;
   std::array< std::unique_ptr< End >, sides.size() > ends_;
};

} // namespace Replay::Peering
