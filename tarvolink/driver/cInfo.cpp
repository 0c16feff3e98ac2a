#include "tarvolink/driver/cInfo.h"

cInfo::~cInfo() = default;

int cInfo::getNumSpot() const { return numSpot; }

int cInfo::getScanSpeed() const { return scanSpeed; }
