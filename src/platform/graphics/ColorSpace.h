#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "platform/foundation/Bytes.h"
#include "platform/graphics/CodePoints.h"

namespace orvane {

class ColorSpace;

/// Colour spaces are immutable and shared between pictures and threads.
using ColorSpacePtr = std::shared_ptr<const ColorSpace>;

/// CIE 1931 x, y of the three primaries and the white point, and one exponent for all channels:
/// what PNG's cHRM and gAMA chunks say.
struct Chromaticities {
  struct Point {
    double x = 0;
    double y = 0;
  };
  Point red, green, blue, white;
  double gamma = 2.2;  ///< decoding exponent: linear = value ^ gamma
};

/// The meaning of a picture's numbers.
class ColorSpace {
 public:
  enum class Model { gray, rgb, cmyk };

  static constexpr std::string_view sRGBName = "kCGColorSpaceSRGB";
  static constexpr std::string_view extendedSRGBName = "kCGColorSpaceExtendedSRGB";

  /// The space of a picture of `model` that carries no other: sRGB; grey whose numbers are taken
  /// for R, G and B of sRGB; uncalibrated CMYK.
  static ColorSpacePtr standard(Model model);
  static ColorSpacePtr sRGB() { return standard(Model::rgb); }

  /// The space of an embedded profile (ICC.1:2022). A profile that does what sRGB does, within the
  /// rounding of 8 bits, is `standard(model)` whatever its bytes. A broken profile, or one for
  /// another model, gives `standard(model)` too.
  static ColorSpacePtr fromICC(ByteView profile, Model model);

  /// The space that ITU-T H.273 code points name, with an equivalent profile. An unspecified number
  /// is taken for sRGB's; numbers that no profile can express give `standard(model)`. `model` is
  /// rgb or gray.
  static ColorSpacePtr fromCodePoints(CodePoints codePoints, Model model);

  /// The space of these primaries and this exponent, with an equivalent profile. `model` is rgb or
  /// gray. Impossible primaries give `standard(model)`.
  static ColorSpacePtr fromChromaticities(const Chromaticities& chromaticities, Model model);

  ColorSpace(Model model, std::optional<std::string_view> name, Bytes iccData,
             std::optional<CodePoints> codePoints);

  Model model() const { return model_; }

  /// `sRGBName` for sRGB; the spaces of profiles and code points have no name.
  std::optional<std::string_view> name() const { return name_; }
  bool isSRGB() const { return name_ == sRGBName; }

  /// The profile; empty for uncalibrated CMYK.
  ByteView iccData() const { return iccData_; }

  /// The H.273 code points that mean the same as the profile, if any. An embedded profile is
  /// recognised at each call: by its cicp tag for PQ and HLG, otherwise by the colours that it
  /// gives.
  std::optional<CodePoints> codePoints() const;

  /// Whether the numbers are proportional to light. True of grey and of RGB matrix profiles whose
  /// curves are straight.
  bool isLinear() const;

  /// The RGB space with the primaries of this linear one and sRGB's curve; sRGB for grey.
  ColorSpacePtr withSRGBCurve() const;

  /// Whether pictures can be rendered into this space: RGB, and its profile converts both ways.
  bool supportsOutput() const { return supportsOutput_; }

 private:
  Model model_;
  std::optional<std::string_view> name_;
  Bytes iccData_;
  std::optional<CodePoints> codePoints_;
  bool supportsOutput_ = false;
};

/// The space to render a picture of the space `own` into: `own` when it is RGB and supports output,
/// sRGB otherwise.
ColorSpacePtr renderingSpace(const ColorSpacePtr& own);

}  // namespace orvane
