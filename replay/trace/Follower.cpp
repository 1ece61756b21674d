#include "replay/trace/Follower.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace TraceTool {

namespace {

// Looks for what is still expected, once nothing new is begun.
constexpr unsigned mostPatience = 10;

} // namespace

Follower::Follower( std::string path )
    : path_( std::move( path ) ), source_( std::make_unique< TraceSource >( path_ ) ),
      patience_( mostPatience ) {}

Look Follower::first( LastLook lastLook ) {
   return flow_.take( source_->read( flow_.after() ), lastLook );
}

Look Follower::next() {
   Look look;
   if ( source_ != nullptr ) {
      // In this order: who gave the name to another file writes to this one no more.
      const auto identity = identityOf( path_ );
      const bool replaced = identity && *identity != source_->identity();
      readOn( look, replaced ? LastLook::yes : LastLook::no );
      if ( !replaced ) {
         return look;
      }
      source_.reset();
   }
   openNew( look );
   return look;
}

// Reading takes the time of decoding a whole ring. What was begun and is not finished for long may
// never be: who wrote it has died.
bool Follower::worthReading() {
   if ( source_->hasChanged() ) {
      patience_ = mostPatience;
      return true;
   }
   const bool untold = !trouble_.empty() && !told_;
   if ( patience_ == 0 || !( untold || flow_.expectsSome() ) ) {
      return false;
   }
   --patience_;
   return true;
}

void Follower::readOn( Look & look, LastLook lastLook ) {
   try {
      if ( lastLook == LastLook::yes || worthReading() ) {
         look = flow_.take( source_->read( flow_.after() ), lastLook );
         trouble_.clear();
      }
   } catch ( const Unusable & error ) {
      cannotUse( look, error.what() );
   }
}

void Follower::openNew( Look & look ) {
   try {
      auto source = std::make_unique< TraceSource >( path_ );
      RecordFlow flow;
      Look found = flow.take( source->read( flow.after() ), LastLook::no );
      if ( !found.complaints.empty() && trouble_ != found.complaints.front() ) {
         trouble_ = found.complaints.front(); // looked at once more: it may be being filled
         told_ = true;
         return;
      }
      source_ = std::move( source );
      flow_ = std::move( flow );
      patience_ = mostPatience;
      trouble_.clear();
      look.newFile = look.records.size();
      std::ranges::move( found.records, std::back_inserter( look.records ) );
      std::ranges::move( found.complaints, std::back_inserter( look.complaints ) );
   } catch ( const Unusable & error ) {
      cannotUse( look, error.what() );
   }
}

// Told when it lasts: a file that is being made is none yet.
void Follower::cannotUse( Look & look, const std::string & why ) {
   if ( why != trouble_ ) {
      trouble_ = why;
      told_ = false;
   } else if ( !told_ ) {
      told_ = true;
      look.complaints.push_back( why );
   }
}

} // namespace TraceTool
