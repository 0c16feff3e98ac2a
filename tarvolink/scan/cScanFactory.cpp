#include "tarvolink/scan/cScanFactory.h"

#include <cstddef>
#include <iterator>

namespace {

/// The points of distances, made as they are asked for: a vector filled from these writes each
/// point once, where resizing it would write zeros first. Forward, so that the vector counts them
/// before it makes room, although they are handed out by value.
class cPointSource {
 public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = cScanPoint;
  using difference_type = std::ptrdiff_t;
  using pointer = const cScanPoint*;
  using reference = cScanPoint;

  /// The point of `*value` is number `index` of `scan`.
  cPointSource(const cScan& scan, std::size_t firstIndex, const int* firstValue)
      : firstAngle(scan.firstAngle),
        angleStep(scan.angleStep),
        index(static_cast<int>(firstIndex)),
        value(firstValue) {}

  cScanPoint operator*() const {
    return cScanFactory::genPoint(*value, firstAngle + index * angleStep);
  }
  cPointSource& operator++() {
    ++index;
    ++value;
    return *this;
  }
  bool operator==(const cPointSource& other) const { return value == other.value; }
  bool operator!=(const cPointSource& other) const { return value != other.value; }

 private:
  double firstAngle;
  double angleStep;
  int index;
  const int* value;
};

}  // namespace

cScanPoint cScanFactory::genPoint(int value, double angle) {
  return {static_cast<double>(value), angle};
}

void cScanFactory::addData(std::vector<int> values) {
  if (values.empty()) return;
  std::vector<cScanPoint>& points = scan->points;
  const cPointSource first(*scan, points.size(), values.data());
  points.insert(points.end(), first, cPointSource(*scan, 0, values.data() + values.size()));
}
