#pragma once

// One pass over a keyed collection, in range-for form (platform/Vex/KeyedCollection.h tells what it
// visits). While a pass is under way entries keep their positions, so that it can go on from where
// it stands, whatever its visitor does to the collection.

#include <cstdint>

namespace Vex {

template < class Collection, class Projection >
class CollectionPass {
 public:
   explicit CollectionPass( const Collection & collection ) noexcept
       : collection_( collection ), end_( collection.entries_.used() ) {
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

   class Iterator {
    public:
      Iterator( const Collection & collection, std::uint32_t end ) noexcept
          : collection_( collection ), end_( end ) {
         skipHoles();
      }
      auto operator*() const { return Projection()( collection_.entries_[ at_ ] ); }
      Iterator & operator++() noexcept {
         ++at_;
         skipHoles();
         return *this;
      }
      friend bool operator==( const Iterator & iterator, End /* end */ ) noexcept {
         return iterator.at_ == iterator.end_;
      }

    private:
      void skipHoles() noexcept {
         while ( at_ != end_ && !collection_.entries_.live( at_ ) ) {
            ++at_;
         }
      }

      const Collection & collection_;
      std::uint32_t at_ = 0;
      std::uint32_t end_; // what is inserted behind it during the pass is not visited
   };

   Iterator begin() const noexcept { return Iterator( collection_, end_ ); }
   End end() const noexcept { return {}; }

 private:
   const Collection & collection_;
   std::uint32_t end_;
};

} // namespace Vex
