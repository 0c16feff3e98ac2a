#pragma once

#include <string>

#include "tarvolink/driver/iInfo.h"
#include "tarvolink/export.h"

/// The stored values of `iInfo`: texts are empty and numbers 0 until a driver fills them. One
/// caller at a time, as there. Nothing fails.
class TARVOLINK_API cInfo : public virtual iInfo {
 public:
  std::string getVend() const override { return vend; }
  std::string getProd() const override { return prod; }
  std::string getFirm() const override { return firm; }
  std::string getProt() const override { return prot; }
  std::string getSerial() const override { return serial; }
  std::string getStatus() const override { return status; }
  int getMinSpot() const override { return minSpot; }
  int getMaxSpot() const override { return maxSpot; }
  int getFrontSpot() const override { return frontSpot; }
  bool isActivated() const override { return activated; }
  int getMaxDist() const override { return maxDist; }
  int getMinDist() const override { return minDist; }

  virtual ~cInfo();

  virtual int getNumSpot() const;    ///< steps in a full turn; 0 before `fetchParameters`
  virtual int getScanSpeed() const;  ///< turns per minute, as the sensor reports it; SCIP 1.x: 0

 protected:
  cInfo() = default;  ///< all empty and 0

  bool activated = false;  ///< see `isActivated`
  std::string vend;        ///< see `getVend`
  std::string prod;        ///< see `getProd`
  std::string firm;        ///< see `getFirm`
  std::string prot;        ///< see `getProt`
  std::string serial;      ///< see `getSerial`
  std::string status;      ///< see `getStatus`
  int minSpot = 0;         ///< see `getMinSpot`
  int maxSpot = 0;         ///< see `getMaxSpot`
  int frontSpot = 0;       ///< see `getFrontSpot`
  int minDist = 0;         ///< see `getMinDist`, millimetres
  int maxDist = 0;         ///< see `getMaxDist`, millimetres
  int numSpot = 0;         ///< see `getNumSpot`
  int scanSpeed = 0;       ///< see `getScanSpeed`
};
