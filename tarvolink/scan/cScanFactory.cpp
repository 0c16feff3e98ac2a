#include "tarvolink/scan/cScanFactory.h"

#include <cstddef>
#include <iterator>

namespace {

/// Iterates over distances and makes their points on the fly: a vector filled from it writes each
/// point once, where resizing would write zeros first. A forward iterator, although it returns by
/// value, so that the vector counts the points before it reserves room.
class cPointSource {
 public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = cScanPoint;
  using difference_type = std::ptrdiff_t;
  using pointer = const cScanPoint*;
  using reference = cScanPoint;

  /// Begins at `*value`, whose point is number `index` of `scan`.
  cPointSource(const cScan& scan, std::size_t index, const int* value)
      : firstAngle(scan.firstAngle),
        angleStep(scan.angleStep),
        index(static_cast<int>(index)),
        value(value) {}

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
