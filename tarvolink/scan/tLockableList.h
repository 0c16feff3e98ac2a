#pragma once

/// @file
/// A list shared between threads.

#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <iterator>
#include <list>

#include "tarvolink/scan/cScan.h"

/// A list with the mutex that guards it; the oldest element is at the front.
///
/// Use it through the functions of namespace `lockable`. Each locks `mutex` for one short critical
/// section, so do not call one with the mutex held. Any thread may call them. Taking an element
/// removes it from the list.
template <typename T>
struct tLockableList {
  std::list<T> list;   ///< oldest first; under `mutex`
  boost::mutex mutex;  ///< held for single operations only
};

/// Scans that wait for the caller.
using cLockableScanList = tLockableList<boost::shared_ptr<cScan>>;

/// Operations on a `tLockableList`. Any thread.
namespace lockable {

/// Appends `element` as the newest.
template <typename T>
void append(tLockableList<T>& elements, const T& element) {
  boost::mutex::scoped_lock lock(elements.mutex);
  elements.list.push_back(element);
}

/// Takes the oldest element; a default T if there is none.
template <typename T>
T takeFirst(tLockableList<T>& elements) {
  boost::mutex::scoped_lock lock(elements.mutex);
  if (elements.list.empty()) return T();
  T taken = elements.list.front();
  elements.list.pop_front();
  return taken;
}

/// Takes the newest element; a default T if there is none.
template <typename T>
T takeLast(tLockableList<T>& elements) {
  boost::mutex::scoped_lock lock(elements.mutex);
  if (elements.list.empty()) return T();
  T taken = elements.list.back();
  elements.list.pop_back();
  return taken;
}

/// Takes the element at `index`, counted from the oldest at 0; a default T, with nothing
/// removed, if there is none.
template <typename T>
T takeAt(tLockableList<T>& elements, int index) {
  boost::mutex::scoped_lock lock(elements.mutex);
  if (index < 0 || static_cast<std::size_t>(index) >= elements.list.size()) return T();
  const auto place = std::next(elements.list.begin(), index);
  T taken = *place;
  elements.list.erase(place);
  return taken;
}

/// Removes every element.
template <typename T>
void purge(tLockableList<T>& elements) {
  boost::mutex::scoped_lock lock(elements.mutex);
  elements.list.clear();
}

/// Removes the oldest element if there are more than `limit`. True: it did.
template <typename T>
bool trim(tLockableList<T>& elements, std::size_t limit) {
  boost::mutex::scoped_lock lock(elements.mutex);
  if (elements.list.size() <= limit) return false;
  elements.list.pop_front();
  return true;
}

/// The number of elements.
template <typename T>
int count(tLockableList<T>& elements) {
  boost::mutex::scoped_lock lock(elements.mutex);
  return static_cast<int>(elements.list.size());
}

/// Whether it holds no element.
template <typename T>
bool isEmpty(tLockableList<T>& elements) {
  boost::mutex::scoped_lock lock(elements.mutex);
  return elements.list.empty();
}

}  // namespace lockable
