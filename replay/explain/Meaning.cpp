#include "replay/explain/Meaning.h"

#include <functional>
#include <unordered_map>
#include <utility>

namespace Explain {

namespace {

using enum Check;
using enum Says;
using enum Seen;

// ---- What an interlock has seen, once a message is there ----------------------------------------
// A message stands for all that was passed on the way to it.

constexpr std::array isNoMember{ Saw{ memberOfLag, no, "no" } };
constexpr std::array isMember{ Saw{ memberOfLag, yes, "yes" } };
constexpr std::array mlagIsInactive{ Saw{ mlagActive, no, "no" } };
constexpr std::array mlagIsActive{ Saw{ mlagActive, yes, "yes" } };
constexpr std::array noPeerLink{ Saw{ peerLink, no, "no, there is none" } };
constexpr std::array peerLinkIsDown{ Saw{ peerLink, no, "no" } };
constexpr std::array peerLinkIsUp{ Saw{ peerLink, yes, "yes" } };
constexpr std::array thatPeerLinkIsDown{ Saw{ peerLink, no, "no: {0}" } };
constexpr std::array thatPeerLinkIsUp{ Saw{ peerLink, yes, "yes: {0}" } };
constexpr std::array isActiveOnPeer{ Saw{ activeOnPeer, yes, "yes" } };
constexpr std::array isInactiveOnPeer{ Saw{ activeOnPeer, no, "no" } };
constexpr std::array isNoMlag{ Saw{ mlagInterface, no, "no" } };
constexpr std::array needsNoAcl{ Saw{ aclNeeded, no, "no" } };
constexpr std::array needsAcl{ Saw{ aclNeeded, yes, "yes" } };
constexpr std::array hasAcl{ Saw{ localAcl, yes, "yes" } };
constexpr std::array hasNoAcl{ Saw{ localAcl, no, "no" } };

constexpr std::array hasNoMembers{ Saw{ lagHasMembers, no, "no" } };
constexpr std::array withdrawn{ Saw{ request, done, "withdrawn, if one was out" } };
constexpr std::array noMlagSoWithdrawn{ Saw{ mlagInterface, no, "no" },
                                        Saw{ request, done, "withdrawn, if one was out" } };
constexpr std::array sent{ Saw{ request, done, "sent with token {0}" } };
constexpr std::array nothingAsked{
   Saw{ peersAnswer, no, "not asked for: the LAG has no members" } };
constexpr std::array notAnswered{ Saw{ peersAnswer, no, "none that fits the request yet" } };
constexpr std::array answered{ Saw{ peersAnswer, yes, "there, and fits the request" } };
constexpr std::array answerLost{
   Saw{ peersAnswer, no, "gone, or fits no more: the link counts as failed" } };
constexpr std::array noAnswerInTime{
   Saw{ peersAnswer, no, "none that fits came in time: the link counts as failed" } };

constexpr std::array isNoMlagMember{ Saw{ memberOfLag, yes, "yes" },
                                     Saw{ mlagInterface, no, "no" } };
constexpr std::array isMlagMember{ Saw{ memberOfLag, yes, "yes" },
                                   Saw{ mlagInterface, yes, "yes" } };
constexpr std::array lacksLocalAcl{
   Saw{ memberOfLag, yes, "yes" }, Saw{ mlagInterface, yes, "yes" },
   Saw{ activeOnPeer, yes, "yes, so that an ACL is needed here" }, Saw{ localAcl, no, "no" } };

constexpr std::array needsNoTranslation{ Saw{ translationNeeded, no, "no" } };
constexpr std::array needsTranslation{ Saw{ translationNeeded, yes, "yes" } };
constexpr std::array hasTranslation{ Saw{ translation, yes, "yes" } };
constexpr std::array hasNoTranslation{ Saw{ translation, no, "no" } };

// ---- The table ----------------------------------------------------------------------------------

constexpr Meaning acl( std::string_view function, std::string_view message, Says says ) {
   Meaning meaning;
   meaning.function = function;
   meaning.message = message;
   meaning.says = says;
   return meaning;
}
constexpr Meaning vlan( std::string_view function, std::string_view message, Says says ) {
   Meaning meaning = acl( function, message, says );
   meaning.gate = Gate::vlanXlate;
   return meaning;
}
constexpr Meaning ofPair( Meaning meaning, std::string_view words = {} ) {
   meaning.member = 0;
   meaning.lag = 1;
   meaning.words = words;
   return meaning;
}
constexpr Meaning ofLag( Meaning meaning, std::string_view words = {} ) {
   meaning.lag = 0;
   meaning.words = words;
   return meaning;
}
constexpr Meaning ofAll( Meaning meaning, std::string_view words ) {
   meaning.words = words;
   return meaning;
}
constexpr Meaning saw( Meaning meaning, std::span< const Saw > saws ) {
   meaning.saws = saws;
   return meaning;
}
constexpr Meaning ends( Meaning meaning, Reason reason, std::span< const Saw > saws ) {
   meaning.says = verdict;
   meaning.reason = reason;
   meaning.saws = saws;
   return meaning;
}

constexpr std::array table{
   // What sets a decision off.
   ofPair( acl( "handleIntfFeature", "handleIntfFeature memberIntf : {} lag : {}", event ),
           "the egress ACL of {0} in {1} was installed or removed" ),
   ofLag( acl( "handleMlagIntfStatus", "handleMlagIntfStatus mlagIntf: {}", event ),
          "the MLAG status of {0} changed" ),
   ofAll( acl( "handleMlagStateOrPeerlink", "handleMlagStateOrPeerlink", event ),
          "the MLAG state, the peer link or its link status changed" ),
   ofLag( acl( "handlePeerResponse", "handlePeerResponse lag: {}", event ),
          "the peer's answer for {0} came, changed or went" ),
   ofLag( acl( "handleTimeout", "handleTimeout lag : {}", timeout ),
          "the time-out of {0} came: the peer had not answered" ),
   ofAll( acl( "handleInitialized", "handleInitialized", start ), "the interlock started" ),
   ofAll(
      acl( "handleFeatureSwitchover", "handleFeatureSwitchover peer-interlock: {}", switchover ),
      "the controller changed its interlock: peer-interlock is {0}" ),

   // Passes over LAGs and members.
   ofLag( acl( "handleLag", "handleLag (top-level) lag : {}", lagEvent ),
          "{0} was looked at as a whole" ),
   ofLag( acl( "handleLag", "handleLag lag: {}", namesLag ) ),
   acl( "handleLag", "Interface isn't a lag or it is a lag but not active", nothing ),
   ofLag( acl( "handleLagInactive", "handleLagInactive lag : {}", lagEmpty ) ),
   acl( "handleAllLags", "handleAllLags", nothing ),
   acl( "handleMlagIntfStatus", "mlagIntf isn't a lag or it is a lag but not active", nothing ),
   acl( "handleMlagIntfStatus",
        "handleMlagIntfStatus mlagIntf isn't a lag or it is a lag but not active",
        nothing ),

   // A decision of any egress-ACL interlock begins.
   ofPair( acl( "handleMember", "handleMember memberIntf : {} lag : {}", decides ),
           "{0} entered, left or changed in {1}" ),
   acl( "lagMemberActive", "lagMemberActive memberIntf : {} lag : {}", looksForMember ),
   saw( acl( "lagMemberActive", "lagMemberActive member is active", check ), isMember ),
   saw( acl( "lagMemberActive", "lagMemberActive member is not active", check ), isNoMember ),
   saw( acl( "lagMemberActive", "lagMemberActive member isn't active", check ), isNoMember ),

   // Basic and deprecated.
   ends( acl( "handleMember", "lag member isn't active", verdict ), Reason::notMember, isNoMember ),
   saw( acl( "handleMember", "lag member is active", check ), isMember ),
   ofLag( acl( "shouldInstallEgressAcl", "shouldInstallEgressAcl lag : {}", asksForAcl ) ),
   saw( acl( "shouldInstallEgressAcl", "shouldInstallEgressAcl Mlag is inactive", check ),
        mlagIsInactive ),
   saw( acl( "shouldInstallEgressAcl", "shouldInstallEgressAcl Mlag is active", check ),
        mlagIsActive ),
   saw( acl( "shouldInstallEgressAcl", "shouldInstallEgressAclpeer link: doesn't exist", check ),
        noPeerLink ),
   saw( acl( "shouldInstallEgressAcl", "shouldInstallEgressAcl peer link: inactive", check ),
        peerLinkIsDown ),
   saw( acl( "shouldInstallEgressAcl", "shouldInstallEgressAcl peer link: active", check ),
        peerLinkIsUp ),
   saw( acl( "shouldInstallEgressAcl", "shouldInstallEgressAclpeerLink doesn't exist", check ),
        noPeerLink ),
   saw( acl( "shouldInstallEgressAcl", "shouldInstallEgressAcl peer link : {} inactive", check ),
        thatPeerLinkIsDown ),
   saw( acl( "shouldInstallEgressAcl", "shouldInstallEgressAcl peer link : {} active", check ),
        thatPeerLinkIsUp ),
   saw( acl( "shouldInstallEgressAcl", "shouldInstallEgressAclpeer mlag intf is active", check ),
        isActiveOnPeer ),
   saw( acl( "shouldInstallEgressAcl",
             "shouldInstallEgressAclpeer Mlag intf of {} is inactve",
             check ),
        isInactiveOnPeer ),
   saw( acl( "shouldInstallEgressAcl", "shouldInstallEgressAcllag {} isn't an Mlag", check ),
        isNoMlag ),
   ends( acl( "handleMember", "egress ACL shouldn't be installed", verdict ),
         Reason::aclNotNeeded,
         needsNoAcl ),
   saw( acl( "handleMember", "egress ACL should be installed", check ), needsAcl ),
   ends( acl( "handleMember", "lag and member are in input IntfFeatureStatus", verdict ),
         Reason::aclInPlace,
         hasAcl ),
   ends( acl( "handleMember", "lag and member are not in input IntfFeatureStatus", verdict ),
         Reason::noLocalAcl,
         hasNoAcl ),

   // Peer-coordinated: the exchange.
   ofLag( acl( "handlePeerInterlockLag", "handlePeerInterlockLag lag : {}", namesLag ) ),
   saw( acl( "handlePeerInterlockLag", "lag is not active", check ), hasNoMembers ),
   saw( acl( "handlePeerInterlockLag",
             "Revoking install request for lag (no longer active)",
             requestWithdrawn ),
        withdrawn ),
   saw( acl( "handlePeerInterlockLag",
             "Revoking install request for lag (no longer mlag intf)",
             mlagEnded ),
        noMlagSoWithdrawn ),
   saw(
      acl( "handlePeerInterlockLag", "Sending install request to peer with value {}", requestSent ),
      sent ),
   ofLag( acl( "updateLinkState", "updateLinkState lag : {}", namesLag ) ),
   saw( acl( "updateLinkState", "Transitioning link state from {} to linkDown", linkDown ),
        nothingAsked ),
   saw( acl( "updateLinkState",
             "Transitioning link state from {} to linkRequesting",
             linkRequesting ),
        notAnswered ),
   saw( acl( "updateLinkState", "Transitioning link state from {} to linkUp", linkUp ), answered ),
   saw( ofLag( acl( "updateLinkState",
                    "Syslog: Lag {} is linkUp, but has not gotten a response from the peer yet",
                    linkFailed ) ),
        answerLost ),
   saw( ofLag( acl( "handlePeerResponse",
                    "Syslog: Lag {} is linkUp, but has not gotten a response from the peer yet",
                    linkFailed ) ),
        answerLost ),
   ofLag( acl( "handleLinkState", "handleLinkState lag : {}", namesLag ) ),
   ofLag( acl( "handleLinkState", "Starting timeout for lag {} at time {}", deadlineSet ) ),
   ofLag( acl( "handleLinkState", "Stopping timeout for lag {}", deadlineGone ) ),
   acl( "handleTimer", "handleTimer lag : {}", nothing ),
   acl( "resetTimer", "resetTimer", nothing ),
   saw( ofLag( acl( "handleTimeout", "Syslog: Timeout has occurred on lag {}", timedOut ) ),
        noAnswerInTime ),
   acl( "doCleanup", "doCleanup", cleanup ),

   // Peer-coordinated: the members.
   ends(
      acl( "handleMember", "lag member is not active", verdict ), Reason::notMember, isNoMember ),
   ends(
      acl( "handleMember", "lag is not an mlag intf", verdict ), Reason::notMlag, isNoMlagMember ),
   ends( acl( "handleMember", "lag is down, member cannot be added", verdict ),
         Reason::lagDown,
         isMlagMember ),
   ends( acl( "handleMember", "member is not ready to be added to lag", verdict ),
         Reason::awaitingPeer,
         isMlagMember ),
   ends( acl( "handleMember", "mlag intf is 'linkUp' but local acl is not installed", verdict ),
         Reason::noLocalAcl,
         lacksLocalAcl ),
   // For two reasons: the peer has answered, or the link has failed, which asks for no ACL.
   ends( acl( "handleMember",
              "acl criteria satisfied (or linkFail), allowing member to join the lag",
              verdict ),
         Reason::peerAnswered,
         isMlagMember ),

   // VLAN translation.
   vlan( "handleIntfFeature", "handleIntfFeature intfFeature: {}", nothing ),
   ofPair( vlan( "handleIntfFeature", "handleIntfFeature memberIntf : {} lag : {}", event ),
           "VLAN translation was programmed or removed for {0} in {1}" ),
   ofPair( vlan( "handleMember", "handleMember memberIntf: {} lag: {}", event ),
           "{0} entered, left or changed in {1}" ),
   ofLag( vlan( "handleIntfConfig", "handleIntfConfig intf: {}", event ),
          "the switching configuration of {0}, or a mapping in it, changed" ),
   vlan( "handleIntfConfig",
         "handleIntfConfig intf isn't a lag or it is a lag but not active",
         nothing ),
   ofAll( vlan( "handleInitialized", "handleInitialized", start ), "the interlock started" ),
   vlan( "lagMemberActive", "lagMemberActive memberIntf: {} lag: {}", nothing ),
   vlan( "lagMemberActive", "lagMemberActive member isn't active", nothing ),
   vlan( "lagMemberActive", "lagMemberActive member is active", nothing ),
   ofPair( vlan( "updateIntfFeature", "updateIntfFeature memberIntf: {} lag: {}", decides ),
           "{0} in {1} was looked at" ),
   ends( vlan( "updateIntfFeature", "lag memeber is not active", verdict ),
         Reason::notMember,
         isNoMember ),
   saw( vlan( "updateIntfFeature", "lag member is active", check ), isMember ),
   ofLag( vlan( "needsVlanXlateProgramming", "needsVlanXlateProgramming lag: {}", namesLag ) ),
   ends( vlan( "updateIntfFeature", "vlan translation programming is not necessary", verdict ),
         Reason::translationNotNeeded,
         needsNoTranslation ),
   saw( vlan( "updateIntfFeature", "vlan translation programming is necessary", check ),
        needsTranslation ),
   ends( vlan( "updateIntfFeature", "lag and member are in input IntfFeatureStatus", verdict ),
         Reason::translationInPlace,
         hasTranslation ),
   ends( vlan( "updateIntfFeature", "lag and member are not in input IntfFeatureStatus", verdict ),
         Reason::noTranslation,
         hasNoTranslation ),
};

// ---- Looking things up --------------------------------------------------------------------------

constexpr std::string_view placeholder = "{}";

struct Key {
   Gate gate;
   std::string_view function;
   std::string_view message;

   friend bool operator==( const Key &, const Key & ) = default;
};
struct HashOfKey {
   std::size_t operator()( const Key & key ) const noexcept {
      const std::hash< std::string_view > hash;
      return hash( key.message ) ^ hash( key.function ) * 31U ^
             static_cast< std::size_t >( key.gate );
   }
};

// The arguments of a message that was written by this entry; nothing when it was not. A name that
// holds the text behind it ends there.
std::optional< std::vector< std::string > > argumentsIn( std::string_view message,
                                                         std::string_view pattern ) {
   std::vector< std::string > arguments;
   std::size_t end = pattern.find( placeholder );
   if ( end == std::string_view::npos ) {
      return message == pattern ? std::optional( std::move( arguments ) ) : std::nullopt;
   }
   if ( !message.starts_with( pattern.substr( 0, end ) ) ) {
      return std::nullopt;
   }
   for ( std::size_t at = 0;; ) {
      message.remove_prefix( at + end );
      pattern.remove_prefix( end + placeholder.size() );
      end = pattern.find( placeholder );
      if ( end == std::string_view::npos ) {
         break;
      }
      at = message.find( pattern.substr( 0, end ) );
      if ( at == std::string_view::npos ) {
         return std::nullopt;
      }
      arguments.emplace_back( message.substr( 0, at ) );
   }
   if ( !message.ends_with( pattern ) ) {
      return std::nullopt;
   }
   arguments.emplace_back( message.substr( 0, message.size() - pattern.size() ) );
   return arguments;
}

// Most of the egress-ACL interlocks write their name in front, in the text trace alone.
std::string_view withoutSpeaker( std::string_view message ) noexcept {
   const std::size_t end = message.find( "::" );
   const std::string_view speaker = message.substr( 0, end );
   const bool isName = end != std::string_view::npos && speaker.ends_with( "Sm" ) &&
                       speaker.find( ' ' ) == std::string_view::npos;
   return isName ? message.substr( end + 2 ) : message;
}

} // namespace

std::span< const Meaning > meanings() noexcept {
   return table;
}

std::optional< Gate > gateOfSource( std::string_view source ) noexcept {
   if ( source == "Velo/VeloMlagEgressAclIntfInterlockSm" ) {
      return Gate::egressAcl;
   }
   if ( source == "Velo/VeloVlanXlateIntfInterlockSm" ) {
      return Gate::vlanXlate;
   }
   return std::nullopt;
}

const Meaning * meaningOf( Gate gate, std::string_view function, std::string_view message ) {
   static const auto index = [] {
      std::unordered_map< Key, const Meaning *, HashOfKey > entries;
      for ( const Meaning & meaning : table ) {
         entries.emplace( Key{ meaning.gate, meaning.function, meaning.message }, &meaning );
      }
      return entries;
   }();
   const auto found = index.find( { gate, function, message } );
   return found != index.end() ? found->second : nullptr;
}

Read readMessage( Gate gate, std::string_view function, std::string_view message ) {
   const std::string_view said = withoutSpeaker( message );
   for ( const Meaning & meaning : table ) {
      if ( meaning.gate == gate && meaning.function == function ) {
         if ( auto arguments = argumentsIn( said, meaning.message ) ) {
            return { &meaning, std::move( *arguments ) };
         }
      }
   }
   return {};
}

std::string filled( std::string_view words, std::span< const std::string > arguments ) {
   std::string text;
   while ( !words.empty() ) {
      const bool argument = words.size() >= 3 && words[ 0 ] == '{' && words[ 2 ] == '}';
      const auto number = argument ? static_cast< std::size_t >( words[ 1 ] - '0' ) : 0;
      if ( argument && number < arguments.size() ) {
         text += arguments[ number ];
         words.remove_prefix( 3 );
      } else {
         text += words.front();
         words.remove_prefix( 1 );
      }
   }
   return text;
}

} // namespace Explain
