#include "tarvolink/scip/cSCIPError.h"

const int cSCIPError::ETIMEOUT_ECHO = 0x0001;
const int cSCIPError::ETIMEOUT_STAT = 0x0002;
const int cSCIPError::ETIMEOUT_BODY = 0x0004;
const int cSCIPError::EINVALID_ECHO = 0x0008;
const int cSCIPError::EINVALID_STATUS = 0x0010;
const int cSCIPError::ESCIP1_STATUS = 0x0400;
const int cSCIPError::ESCIP2_STATUS = 0x0800;
const int cSCIPError::ESCIP2_EXTSTATUS = 0x1000;
const int cSCIPError::ESTATUS_MASK = 0x03FF;

const std::string& cSCIPError::getErrorString(int code, std::string) {
  return code == 0 ? successStr() : notYetStr();
}

const std::string& cSCIPError::successStr() {
  static const std::string text = "Success";
  return text;
}

const std::string& cSCIPError::notYetStr() {
  static const std::string text = "Error String Not implemented yet.";
  return text;
}
