#include "tools/output/iScanFormat.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <nlohmann/json.hpp>
#include <vector>

#include "tools/output/readings.h"
#include "tools/output/timestamp.h"

namespace tool {

namespace {

using tarvo::cLaserScan;

std::string timeOf(const cLaserScan& scan) { return isoTimestamp(scan.arrivalUtc); }

/// One line a scan, for people.
class cTableFormat : public iScanFormat {
 public:
  std::string header() const override {
    return fmt::format(ROW, "scan", "time", "points", "nearest mm", "farthest mm", "scans/s");
  }

  std::string rows(std::uint64_t number, const cLaserScan& scan, double rate) const override {
    const auto valid = readingsOf(scan);
    const auto isNearer = [](const cReading& a, const cReading& b) {
      return a.distance < b.distance;
    };
    const auto [nearest, farthest] = std::minmax_element(valid.begin(), valid.end(), isNearer);
    return fmt::format(ROW, number, timeOf(scan), scan.distances.size(),
                       valid.empty() ? "-" : fmt::to_string(nearest->distance),
                       valid.empty() ? "-" : fmt::to_string(farthest->distance),
                       rate > 0 ? fmt::format("{:.2f}", rate) : "-");
  }

 private:
  static constexpr auto ROW = FMT_STRING("{:>6}  {:<32}  {:>6}  {:>10}  {:>11}  {:>7}\n");
};

/// A field of CSV, quoted where its text needs that (RFC 4180).
std::string csvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + "\"";
}

/// Millimetres with one decimal, and no "-0.0".
double tenths(double millimetres) { return std::round(millimetres * 10) / 10 + 0.0; }

/// One row a point.
class cCsvFormat : public iScanFormat {
 public:
  cCsvFormat(const std::string& device, const cCsvColumns& columns)
      : device(device), columns(columns) {}

  std::string header() const override {
    return fmt::format("scan,timestamp,index,angle_rad,distance_mm{}{}\n",
                       columns.hasPosition ? ",x_mm,y_mm" : "",
                       columns.hasOrigin ? ",device,product,serial" : "");
  }

  std::string rows(std::uint64_t number, const cLaserScan& scan, double) const override {
    const std::string prefix = fmt::format("{},{}", number, timeOf(scan));
    const std::string suffix = getOrigin(*scan.sensor) + "\n";
    std::string rows;
    rows.reserve(
        scan.distances.size() *
        (prefix.size() + sizeof ",9999,-3.141593,60000,-60000.0,-60000.0" + suffix.size()));
    for (std::size_t i = 0; i < scan.distances.size(); ++i) {
      const double angle = angleOf(scan, i);
      fmt::format_to(std::back_inserter(rows), "{},{},{:.6f},{}", prefix, i, angle,
                     scan.distances[i]);
      if (columns.hasPosition) addPosition(rows, angle, scan.distances[i], scan.ranges[i]);
      rows += suffix;
    }
    return rows;
  }

 private:
  static void addPosition(std::string& rows, double angle, int distance, float range) {
    if (!std::isfinite(range)) {
      rows += ",,";
      return;
    }
    fmt::format_to(std::back_inserter(rows), ",{:.1f},{:.1f}", tenths(distance * std::cos(angle)),
                   tenths(distance * std::sin(angle)));
  }

  std::string getOrigin(const tarvo::cSensorInfo& sensor) const {
    if (!columns.hasOrigin) return "";
    return fmt::format(",{},{},{}", csvField(device), csvField(sensor.product),
                       csvField(sensor.serial));
  }

  const std::string device;
  const cCsvColumns columns;
};

/// One object a scan, each on a line.
class cJsonFormat : public iScanFormat {
 public:
  explicit cJsonFormat(const std::string& device) : device(device) {}

  std::string header() const override { return ""; }

  std::string rows(std::uint64_t number, const cLaserScan& scan, double) const override {
    const nlohmann::ordered_json object = {{"scan", number},
                                           {"timestamp", timeOf(scan)},
                                           {"device", device},
                                           {"product", scan.sensor->product},
                                           {"serial", scan.sensor->serial},
                                           {"first_angle", scan.angleMin},
                                           {"angle_step", scan.angleIncrement},
                                           {"distances", scan.distances}};
    using cHandler = nlohmann::ordered_json::error_handler_t;
    return object.dump(-1, ' ', true, cHandler::replace) + "\n";
  }

 private:
  const std::string device;
};

/// Nothing: only the drawing is asked for.
class cNoFormat : public iScanFormat {
 public:
  std::string header() const override { return ""; }
  std::string rows(std::uint64_t, const cLaserScan&, double) const override { return ""; }
};

}  // namespace

const std::map<std::string, eScanFormat>& scanFormats() {
  static const std::map<std::string, eScanFormat> formats = {
      {"table", eScanFormat::TABLE}, {"csv", eScanFormat::CSV}, {"json", eScanFormat::JSON}};
  return formats;
}

std::unique_ptr<iScanFormat> makeScanFormat(eScanFormat format, const std::string& device,
                                            const cCsvColumns& columns) {
  switch (format) {
    case eScanFormat::CSV:
      return std::make_unique<cCsvFormat>(device, columns);
    case eScanFormat::JSON:
      return std::make_unique<cJsonFormat>(device);
    case eScanFormat::NONE:
      return std::make_unique<cNoFormat>();
    case eScanFormat::TABLE:
      break;
  }
  return std::make_unique<cTableFormat>();
}

}  // namespace tool
