#pragma once

#include <boost/shared_ptr.hpp>

namespace kavTBX {

/// Policy of `cSingleton`: the object is made by the first call of `instance`.
struct LazyInstantiation {};

template <typename T, typename Instantiation, typename Mutex>
class cSingleton;

/// The process's only object of type T, made on first use.
template <typename T, typename Mutex>
class cSingleton<T, LazyInstantiation, Mutex> {
 public:
  /// The object: the same for every caller, never made anew or refreshed. Any thread.
  static boost::shared_ptr<T> instance() {
    static boost::shared_ptr<T> object;
    static Mutex mutex;
    typename Mutex::scoped_lock lock(mutex);
    if (!object) object.reset(new T);
    return object;
  }
};

}  // namespace kavTBX
