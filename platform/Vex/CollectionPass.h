#pragma once

// One pass over a keyed collection, in range-for form (platform/Vex/KeyedCollection.h tells what it
// visits). While a pass is under way entries keep their positions, so that it can go on from where
// it stands, whatever its visitor does to the collection.

#include <cstdint>

namespace Vex {

/// Accepts every entry.
struct AnyEntry {
   bool operator()( const auto & /* entry */ ) const noexcept { return true; }
};

/// Of an entry, what a pass over keys visits.
template < class Key >
struct ToKey {
   Key operator()( const auto & entries, std::uint32_t at ) const {
      return Key::unpacked( entries.key( at ) );
   }
};
/// Of an entry, what a pass over entries visits.
template < class Key, class Entry >
struct ToEntry {
   Entry operator()( const auto & entries, std::uint32_t at ) const {
      return { Key::unpacked( entries.key( at ) ), entries.value( at ) };
   }
};

/// Visits what `Wanted` accepts.
template < class Collection, class Projection, class Wanted = AnyEntry >
class CollectionPass {
 public:
   explicit CollectionPass( const Collection & collection, Wanted wanted = Wanted() ) noexcept
       : collection_( collection ), wanted_( wanted ), end_( collection.entries_.used() ) {
      ++collection_.passes_;
   }
   CollectionPass( const CollectionPass & ) = delete;
   CollectionPass & operator=( const CollectionPass & ) = delete;
   CollectionPass( CollectionPass && ) = delete;
   CollectionPass & operator=( CollectionPass && ) = delete;
   ~CollectionPass() {
      --collection_.passes_;
      collection_.closeHoles();
   }

   struct End {};

   /// Stands on an entry that `Wanted` accepts, or at the end.
   class Iterator {
    public:
      Iterator( const Collection & collection, std::uint32_t end, Wanted wanted ) noexcept
          : collection_( collection ), wanted_( wanted ),
            at_( collection.entries_.next( 0, end, wanted ) ), end_( end ) {}
      auto operator*() const { return Projection()( collection_.entries_, at_ ); }
      Iterator & operator++() noexcept {
         at_ = collection_.entries_.next( at_ + 1, end_, wanted_ );
         return *this;
      }
      friend bool operator==( const Iterator & iterator, End /* end */ ) noexcept {
         return iterator.at_ == iterator.end_;
      }

    private:
      const Collection & collection_;
      [[no_unique_address]] Wanted wanted_;
      std::uint32_t at_;
      std::uint32_t end_; // what is inserted behind it during the pass is not visited
   };

   Iterator begin() const noexcept { return Iterator( collection_, end_, wanted_ ); }
   End end() const noexcept { return {}; }

 private:
   const Collection & collection_;
   [[no_unique_address]] Wanted wanted_;
   std::uint32_t end_;
};

} // namespace Vex
