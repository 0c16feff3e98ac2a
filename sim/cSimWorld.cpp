#include "sim/cSimWorld.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "sim/cSimRandom.h"

namespace {

struct cSegment {
  double x1, y1, x2, y2;
};

/// The room in millimetres, with the sensor at 0/0 facing along x. A doorway straight ahead leads
/// into a corridor whose end only a long range sensor sees; the window on the left is open.
const cSegment ROOM[] = {
    {3900, 500, 3900, 3100},     {3900, -2600, 3900, -600},    // front wall, doorway in it
    {3900, 500, 42000, 500},     {3900, -600, 42000, -600},    // corridor
    {42000, 500, 42000, -600},                                 // its far end
    {3900, 3100, 1200, 3100},    {-300, 3100, -2800, 3100},    // left wall, window in it
    {3900, -2600, -2800, -2600}, {-2800, 3100, -2800, -2600},  // right wall, back wall
    {2600, 2300, 3500, 2300},    {2600, 2300, 2600, 3100},     // cupboard
    {3500, 2300, 3500, 3100},                                  //
    {1400, -1500, 2600, -1500},  {1400, -1500, 1400, -2300},   // table
    {2600, -1500, 2600, -2300},  {1400, -2300, 2600, -2300},   //
    {700, -1300, 1000, -1100},   {1000, -1100, 1100, -1400},   // chair
    {700, -1300, 800, -1600},                                  //
    {-1900, 1500, -2300, 1900},  {-1900, 1500, -1500, 1900},   // crate on its edge
    {-900, -1900, -1100, -1700}, {-900, -1900, -700, -1700},   // stand
    {-1100, -1700, -700, -1700},                               //
};

/// The distance along the ray (dx, dy), of length 1, to the segment; infinity if it misses.
double rangeTo(double dx, double dy, const cSegment& wall) {
  const double ex = wall.x2 - wall.x1;
  const double ey = wall.y2 - wall.y1;
  const double cross = dx * ey - dy * ex;
  const double far = std::numeric_limits<double>::infinity();
  if (std::abs(cross) < 1e-9) return far;  // parallel
  const double range = (wall.x1 * ey - wall.y1 * ex) / cross;
  const double part = (wall.x1 * dy - wall.y1 * dx) / cross;
  return range > 0 && part >= 0 && part <= 1 ? range : far;
}

double rangeToRoom(double dx, double dy) {
  double range = std::numeric_limits<double>::infinity();
  for (const cSegment& wall : ROOM) range = std::min(range, rangeTo(dx, dy, wall));
  return range;
}

constexpr double PI = 3.14159265358979323846;
constexpr double NOISE = 8;                   // mm, the standard deviation at close range
constexpr double NOISE_PER_MM = 0.001;        // what each millimetre of range adds to it
constexpr std::uint64_t MISS_INTERVAL = 400;  // one reading in 400 sees nothing, as on dark cloth
constexpr double LAP = 14;                    // seconds that the person takes, a walking pace

}  // namespace

// The seed is mixed once, since scan numbers are added to it: scan n + 1 of seed 1 would otherwise
// be scan n of seed 2.
cSimWorld::cSimWorld(const cSimModel& model, double rate, std::uint32_t seed)
    : model(model), rate(rate), seed(cSimRandom(seed).next()) {
  rays.reserve(static_cast<std::size_t>(model.perTurn));
  for (int step = 0; step < model.perTurn; ++step) {
    const double angle = 2 * PI * (step - model.front) / model.perTurn;
    const double x = std::cos(angle);
    const double y = std::sin(angle);
    rays.push_back({x, y, rangeToRoom(x, y)});
  }
}

cSimWorld::cPerson cSimWorld::personAt(std::uint32_t number) const {
  // On an oval around the sensor; the seed decides where it starts.
  const double angle = 2 * PI * (number / rate / LAP + static_cast<double>(seed % 1000) / 1000);
  return {500 + 1500 * std::cos(angle), 400 + 1200 * std::sin(angle), 220};
}

// The person is a disc: the near root of |along * ray - person| = radius. The room was computed
// once for all scans, only the person moves.
void cSimWorld::addPerson(const cPerson& person, int first, std::vector<double>& ranges) const {
  const double square = person.x * person.x + person.y * person.y - person.radius * person.radius;
  for (std::size_t i = 0; i < ranges.size(); ++i) {
    const cRay& ray = rays[static_cast<std::size_t>(first) + i];
    const double along = ray.x * person.x + ray.y * person.y;
    const double root = along * along - square;
    if (along > 0 && root >= 0) ranges[i] = std::min(ranges[i], along - std::sqrt(root));
  }
}

int cSimWorld::reading(double range, std::uint64_t readingSeed) const {
  cSimRandom random(readingSeed);
  const auto errors = static_cast<std::uint64_t>(model.lastError - model.firstError) + 1;
  if (random.below(MISS_INTERVAL) != 0 && range <= model.maxDistance) {
    const double seen = range + random.gaussian() * (NOISE + range * NOISE_PER_MM);
    if (seen >= model.minDistance && seen <= model.maxDistance) return static_cast<int>(seen);
  }
  return model.firstError + static_cast<int>(random.below(errors));
}

std::vector<int> cSimWorld::scan(std::uint32_t number, int first, int last, int cluster,
                                 int maxReading) const {
  if (first < 0 || last < first || last >= model.perTurn)
    throw std::out_of_range("cSimWorld: a scan needs 0 <= first <= last < steps per turn");
  const auto count = static_cast<std::size_t>(last - first) + 1;
  const auto group = static_cast<std::size_t>(std::max(cluster, 1));
  std::vector<double> ranges(count);
  for (std::size_t i = 0; i < count; ++i)
    ranges[i] = rays[static_cast<std::size_t>(first) + i].range;
  addPerson(personAt(number), first, ranges);

  // A seed for each reading: a step has the same noise whatever range of steps is asked for, so
  // that what a host received can be compared with getTrueDistances of another range.
  const std::uint64_t scanSeed = cSimRandom(seed + number).next();
  std::vector<int> readings;
  readings.reserve(count / group + 1);
  for (std::size_t i = 0; i < count; ++i) {
    const int value =
        std::min(reading(ranges[i], scanSeed + static_cast<std::size_t>(first) + i), maxReading);
    if (i % group == 0) readings.push_back(value);
    int& kept = readings.back();
    const bool valid = value >= model.minDistance;
    if (valid == (kept >= model.minDistance))
      kept = std::min(kept, value);
    else if (valid)
      kept = value;
  }
  return readings;
}
