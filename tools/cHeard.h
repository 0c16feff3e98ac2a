#ifndef TARVOLINK_TOOLS_CHEARD_H
#define TARVOLINK_TOOLS_CHEARD_H

#include <string>

namespace tool {

/// What kind of bytes came when a sensor was asked; the later ones tell more of the cause.
enum class eHeard { NOTHING, GARBAGE, TEXT, OWN_WORDS, ANSWER };

/// What a line said at one speed when it was asked for an identity. Plain text to text, no device.
class cHeard {
 public:
  /// Sent to hear something: an empty line, which ends what a wrong speed has left in the sensor's
  /// line, and "VV", to which SCIP 2.0 sensors tell their identity and SCIP 1.x ones, at most, that
  /// they do not know it.
  static const std::string QUESTION;

  explicit cHeard(const std::string& bytes);

  eHeard getKind() const { return kind; }

  /// For the user, as "garbage (37 bytes)".
  std::string getText() const;

 private:
  eHeard kind;
  std::size_t size;
  std::string sample;  // of TEXT: the beginning of its first line
};

/// The likely cause when nothing better than `best` was heard, and its cure.
std::string causeOf(eHeard best);

}  // namespace tool

#endif
