#include "codecs/heic/HEVCEncoder.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>
#include <vector>

#include "codecs/heic/HEICSettings.h"
#include "codecs/heic/HEIFLibrary.h"
#include "codecs/heic/X265Library.h"
#include "platform/foundation/Bytes.h"

namespace orvane {
namespace {

/// Higher than that of libheif's own plugin (100), so that libheif always chooses this one.
constexpr int priority = 200;

constexpr heif_error success{heif_error_Ok, heif_suberror_Unspecified, "Success"};

/// How a picture is coded. Of this, alpha takes the threads only.
struct Job {
  double rateFactor = 28;
  bool isPhotograph = false;
  int threads = 1;
};

struct Encoder {
  Job job;
  std::vector<Bytes> units;  ///< NAL units of the last picture
  std::size_t nextUnit = 0;
};

// MARK: Parameters

/// The fraction of the rate factor, which x265 drops from the rate factor itself, once for each
/// block of 16 × 16 pixels. x265 adds these offsets to those of adaptive quantisation and rounds
/// the sums, so that the fraction counts.
std::vector<float> blockOffsets(const x265_param& param, double rateFactor) {
  constexpr int side = 16;
  const auto blocks = [](int length) {
    return static_cast<std::size_t>((length + side - 1) / side);
  };
  return std::vector<float>(blocks(param.sourceWidth) * blocks(param.sourceHeight),
                            static_cast<float>(rateFactor - std::floor(rateFactor)));
}

/// Writes the picture's colour description into the stream, as full range.
void describeColor(x265_param& param, const heif_image* image) {
  param.vui.bEnableVideoSignalTypePresentFlag = 1;
  param.vui.bEnableVideoFullRangeFlag = 1;
  const HEIFColorProfile profile = HEIFLibrary::colorProfile(image);
  if (profile == nullptr) return;
  param.vui.bEnableColorDescriptionPresentFlag = 1;
  param.vui.colorPrimaries = profile->color_primaries;
  param.vui.transferCharacteristics = profile->transfer_characteristics;
  param.vui.matrixCoeffs = profile->matrix_coefficients;
}

// MARK: Encoding

X265Library::Picture pictureOf(const heif_image* image, x265_param& param) {
  X265Library::Picture picture = X265Library::makePicture(param);
  const int planes = param.internalCsp == X265_CSP_I400 ? 1 : 3;
  for (int i = 0; i < planes; ++i) {
    const auto channel = static_cast<heif_channel>(heif_channel_Y + i);
    // x265 only reads the planes.
    picture->planes[i] = const_cast<std::uint8_t*>(
        heif_image_get_plane_readonly(image, channel, &picture->stride[i]));
  }
  picture->bitDepth = 8;
  return picture;
}

/// Every unit comes after its length in four bytes, because bAnnexB is off.
void append(const x265_nal* nals, std::uint32_t count, std::vector<Bytes>& units) {
  for (std::uint32_t i = 0; i < count; ++i) {
    units.emplace_back(nals[i].payload + 4, nals[i].payload + nals[i].sizeBytes);
  }
}

std::vector<Bytes> encodedUnits(x265_encoder* encoder, x265_picture* picture) {
  const x265_api& x265 = X265Library::api();
  std::vector<Bytes> units;
  x265_nal* nals = nullptr;
  std::uint32_t count = 0;
  int pictures = x265.encoder_encode(encoder, &nals, &count, picture, nullptr);
  for (;;) {
    if (pictures < 0) throw std::runtime_error("x265 gave up");
    append(nals, count, units);
    if (pictures > 0) return units;
    pictures = x265.encoder_encode(encoder, &nals, &count, nullptr, nullptr);
    if (pictures == 0 && count == 0) throw std::runtime_error("x265 has lost the picture");
  }
}

/// The smallest even sides, at least the minimum, that hold the picture. libheif fills the added
/// part by repeating the border.
HEICSettings::Size codedSize(const heif_image* image) {
  const auto coded = [](int side) {
    return std::max((side + 1) / 2 * 2, HEICSettings::minimumSide);
  };
  return {coded(heif_image_get_width(image, heif_channel_Y)),
          coded(heif_image_get_height(image, heif_channel_Y))};
}

std::vector<Bytes> encode(const heif_image* image, bool isAlpha, const Job& job) {
  const HEICSettings::Size size = codedSize(image);
  // Adds memory around the picture, whose pixels stay the same.
  HEIFLibrary::check(
      heif_image_extend_padding_to_size(const_cast<heif_image*>(image), size.width, size.height));
  const X265Library::Param param =
      isAlpha ? HEICSettings::forAlpha(size)
              : HEICSettings::forColor(size, job.rateFactor, job.isPhotograph);
  std::vector<float> offsets;
  if (!isAlpha) offsets = blockOffsets(*param, job.rateFactor);
  describeColor(*param, image);
  const X265Library::Encoder encoder = X265Library::makeEncoder(*param, job.threads);
  const X265Library::Picture picture = pictureOf(image, *param);
  if (!isAlpha) picture->quantOffsets = offsets.data();
  return encodedUnits(encoder.get(), picture.get());
}

// MARK: Plugin

const char* name() { return "x265, near-lossless alpha"; }

heif_error newEncoder(void** encoder) {
  *encoder = new (std::nothrow) Encoder;
  if (*encoder != nullptr) return success;
  return {heif_error_Memory_allocation_error, heif_suberror_Unspecified, "no memory"};
}

void freeEncoder(void* encoder) { delete static_cast<Encoder*>(encoder); }

heif_error setQuality(void* encoder, int hundredths) {
  static_cast<Encoder*>(encoder)->job.rateFactor = hundredths / 100.0;
  return success;
}

heif_error setInteger(void* encoder, const char* name, int value) {
  Job& job = static_cast<Encoder*>(encoder)->job;
  if (std::strcmp(name, hevcEncoderThreads) == 0) {
    job.threads = value;
  } else if (std::strcmp(name, hevcEncoderPhotograph) == 0) {
    job.isPhotograph = value != 0;
  } else {
    return {heif_error_Usage_error, heif_suberror_Unsupported_parameter, "no such number"};
  }
  return success;
}

/// libheif looks here for limits of a parameter's values. There are none.
const heif_encoder_parameter** parameters(void*) {
  static const heif_encoder_parameter* none = nullptr;
  return &none;
}

void acceptedColors(heif_colorspace* colorspace, heif_chroma* chroma) {
  const bool monochrome = *colorspace == heif_colorspace_monochrome;
  *colorspace = monochrome ? heif_colorspace_monochrome : heif_colorspace_YCbCr;
  *chroma = monochrome ? heif_chroma_monochrome : heif_chroma_420;
}

heif_error encodeImage(void* encoder, const heif_image* image, heif_image_input_class inputClass) {
  auto& state = *static_cast<Encoder*>(encoder);
  try {
    state.nextUnit = 0;
    state.units = encode(image, inputClass == heif_image_input_class_alpha, state.job);
    return success;
  } catch (const std::exception&) {
    state.units.clear();
    return {heif_error_Encoder_plugin_error, heif_suberror_Unspecified, "x265 cannot encode this"};
  }
}

/// Hands out one NAL unit at a time, and null after the last.
heif_error nextUnit(void* encoder, std::uint8_t** data, int* size, heif_encoded_data_type*) {
  auto& state = *static_cast<Encoder*>(encoder);
  *data = nullptr;
  *size = 0;
  if (state.nextUnit < state.units.size()) {
    Bytes& unit = state.units[state.nextUnit++];
    *data = unit.data();
    *size = static_cast<int>(unit.size());
  }
  return success;
}

}  // namespace

const heif_encoder_plugin hevcEncoder{
    .plugin_api_version = 2,
    .compression_format = heif_compression_HEVC,
    .id_name = "x265-still",
    .priority = priority,
    .supports_lossy_compression = 1,
    .get_plugin_name = name,
    .new_encoder = newEncoder,
    .free_encoder = freeEncoder,
    .set_parameter_quality = setQuality,
    .list_parameters = parameters,
    .set_parameter_integer = setInteger,
    .query_input_colorspace = acceptedColors,
    .encode_image = encodeImage,
    .get_compressed_data = nextUnit,
    .query_input_colorspace2 = [](void*, heif_colorspace* colorspace,
                                  heif_chroma* chroma) { acceptedColors(colorspace, chroma); },
};

}  // namespace orvane
