#pragma once

#include <string>

#include "tarvolink/driver/iInfo.h"
#include "tarvolink/export.h"

/// The stored values behind `iInfo`: texts empty and numbers 0 until a driver fills them.
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

  virtual int getNumSpot() const;    ///< steps in a full turn
  virtual int getScanSpeed() const;  ///< turns per minute, as the sensor reports it

 protected:
  cInfo() = default;

  bool activated = false;
  std::string vend;
  std::string prod;
  std::string firm;
  std::string prot;
  std::string serial;
  std::string status;
  int minSpot = 0;
  int maxSpot = 0;
  int frontSpot = 0;
  int minDist = 0;
  int maxDist = 0;
  int numSpot = 0;
  int scanSpeed = 0;
};
