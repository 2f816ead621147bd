#include "codecs/heic/HEVCEncoder.h"

#include <x265.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <stdexcept>
#include <thread>
#include <vector>

#include "codecs/heic/HEIFLibrary.h"
#include "platform/foundation/Bytes.h"
#include "platform/foundation/Memory.h"

namespace orvane {
namespace {

/// Above that of libheif's own plugin (100), which is never asked then.
constexpr int priority = 200;

/// x265 wants at least one coding tree unit; decoders in hardware want pictures no smaller.
constexpr int minimumSide = 64;

/// Alpha at this quantisation parameter is rarely off by more than one.
constexpr int alphaQuantizer = 10;

/// What x265 takes for the picture, its reconstruction and its tables.
constexpr std::size_t bytesPerPixel = 16;

constexpr heif_error success{heif_error_Ok, heif_suberror_Unspecified, "Success"};

struct Encoder {
  double rateFactor = 28;
  std::vector<Bytes> units;  ///< NAL units of the last picture
  std::size_t nextUnit = 0;
};

/// x265 for 8-bit pictures: the library itself, or the one of its several builds that is for them.
const x265_api& api() {
  const x265_api* found = x265_api_get(8);
  if (found == nullptr) throw std::runtime_error("this x265 has no 8-bit build");
  return *found;
}

/// Owners of what x265 makes.
struct X265Deleter {
  void operator()(x265_param* param) const { api().param_free(param); }
  void operator()(x265_picture* picture) const { api().picture_free(picture); }
  void operator()(x265_encoder* encoder) const { api().encoder_close(encoder); }
};
using ParamHandle = std::unique_ptr<x265_param, X265Deleter>;
using PictureHandle = std::unique_ptr<x265_picture, X265Deleter>;
using EncoderHandle = std::unique_ptr<x265_encoder, X265Deleter>;

// MARK: Parameters

void parse(x265_param* param, const char* name, const char* value) {
  if (api().param_parse(param, name, value) != 0) throw std::runtime_error(name);
}

/// Every decoder takes 4:2:0 as Main Still Picture; monochrome makes x265 declare the format range
/// extensions by itself.
ParamHandle stillPictureParam(int width, int height, bool monochrome) {
  ParamHandle param(api().param_alloc());
  if (param == nullptr) throw std::bad_alloc();
  if (api().param_default_preset(param.get(), "medium", "ssim") != 0 ||
      api().param_apply_profile(param.get(), "mainstillpicture") != 0) {
    throw std::runtime_error("x265 lacks a preset or a profile");
  }
  param->sourceWidth = width;
  param->sourceHeight = height;
  param->internalCsp = monochrome ? X265_CSP_I400 : X265_CSP_I420;
  param->fpsNum = 1;
  param->fpsDenom = 1;
  param->totalFrames = 1;
  param->bRepeatHeaders = 1;
  param->bAnnexB = 0;
  param->bEmitInfoSEI = 0;
  param->logLevel = X265_LOG_NONE;
  param->frameNumThreads = 1;
  param->bEnableWavefront = 0;
  parse(param.get(), "pools", "none");
  return param;
}

/// What gives pictures the best SSIMULACRA 2 score for their size and time: coefficients chosen by
/// what they cost, which is all that slower presets gain by; gentler adaptive quantisation than the
/// preset's; finer chroma; deblocking that leaves detail alone; and residuals without transform,
/// which text and drawings gain much by.
void tuneForColor(x265_param* param, double rateFactor) {
  param->rc.rateControlMode = X265_RC_CRF;
  param->rc.rfConstant = std::floor(rateFactor);  // as x265 does itself
  param->rc.aqMode = X265_AQ_VARIANCE;
  param->rc.aqStrength = 0.8;
  param->psyRd = 1.0;
  param->rdoqLevel = 2;
  param->bEnableTransformSkip = 1;
  param->bEnableTSkipFast = 1;
  param->cbQpOffset = -6;
  param->crQpOffset = -6;
  param->deblockingFilterTCOffset = -1;
  param->deblockingFilterBetaOffset = -1;
}

/// The part of a rate factor that x265 drops, for each block of 16×16: it adds this to the offsets
/// of adaptive quantisation before it rounds them to whole parameters.
std::vector<float> blockOffsets(const x265_param& param, double rateFactor) {
  constexpr int side = 16;
  const auto blocks = [](int length) {
    return static_cast<std::size_t>((length + side - 1) / side);
  };
  return std::vector<float>(blocks(param.sourceWidth) * blocks(param.sourceHeight),
                            static_cast<float>(rateFactor - std::floor(rateFactor)));
}

void tuneForAlpha(x265_param* param) {
  param->rc.rateControlMode = X265_RC_CQP;
  param->rc.qp = alphaQuantizer;
  param->bEnableLoopFilter = 0;
}

/// The colour description as the picture has it, in full range.
void describeColor(x265_param* param, const heif_image* image) {
  param->vui.bEnableVideoSignalTypePresentFlag = 1;
  param->vui.bEnableVideoFullRangeFlag = 1;
  const HEIFColorProfile profile = HEIFLibrary::colorProfile(image);
  if (profile == nullptr) return;
  param->vui.bEnableColorDescriptionPresentFlag = 1;
  param->vui.colorPrimaries = profile->color_primaries;
  param->vui.transferCharacteristics = profile->transfer_characteristics;
  param->vui.matrixCoeffs = profile->matrix_coefficients;
}

// MARK: Encoding

/// x265 waits without end for a thread that did not start, and writes to memory that it was not
/// given: see first that both are to be had.
void requireThreadAndMemory(const x265_param& param) {
  std::thread([] {}).join();
  const auto pixels =
      static_cast<std::size_t>(param.sourceWidth) * static_cast<std::size_t>(param.sourceHeight);
  Memory::require(pixels * bytesPerPixel);
}

/// x265 fills its tables of functions when the first encoder is opened, and does so unguarded.
EncoderHandle open(x265_param* param) {
  static std::mutex opening;
  const std::scoped_lock lock(opening);
  requireThreadAndMemory(*param);
  EncoderHandle encoder(api().encoder_open(param));
  if (encoder == nullptr) throw std::runtime_error("x265 does not take this picture");
  return encoder;
}

PictureHandle pictureOf(const heif_image* image, x265_param* param) {
  PictureHandle picture(api().picture_alloc());
  if (picture == nullptr) throw std::bad_alloc();
  api().picture_init(param, picture.get());
  const int planes = param->internalCsp == X265_CSP_I400 ? 1 : 3;
  for (int i = 0; i < planes; ++i) {
    const auto channel = static_cast<heif_channel>(heif_channel_Y + i);
    // x265 only reads them.
    picture->planes[i] = const_cast<std::uint8_t*>(
        heif_image_get_plane_readonly(image, channel, &picture->stride[i]));
  }
  picture->bitDepth = 8;
  return picture;
}

/// With bAnnexB off every unit has its length before it, in four bytes.
void append(const x265_nal* nals, std::uint32_t count, std::vector<Bytes>& units) {
  for (std::uint32_t i = 0; i < count; ++i) {
    units.emplace_back(nals[i].payload + 4, nals[i].payload + nals[i].sizeBytes);
  }
}

std::vector<Bytes> encodedUnits(x265_encoder* encoder, x265_picture* picture) {
  std::vector<Bytes> units;
  x265_nal* nals = nullptr;
  std::uint32_t count = 0;
  int pictures = api().encoder_encode(encoder, &nals, &count, picture, nullptr);
  for (;;) {
    if (pictures < 0) throw std::runtime_error("x265 gave up");
    append(nals, count, units);
    if (pictures > 0) return units;
    pictures = api().encoder_encode(encoder, &nals, &count, nullptr, nullptr);
    if (pictures == 0 && count == 0) throw std::runtime_error("x265 has lost the picture");
  }
}

/// Sides are even and no smaller than the minimum; what is added repeats the border.
int codedSide(int side) { return std::max((side + 1) / 2 * 2, minimumSide); }

std::vector<Bytes> encode(const heif_image* image, bool isAlpha, double rateFactor) {
  const int width = codedSide(heif_image_get_width(image, heif_channel_Y));
  const int height = codedSide(heif_image_get_height(image, heif_channel_Y));
  // Adds memory around the picture, which stays as it is.
  HEIFLibrary::check(
      heif_image_extend_padding_to_size(const_cast<heif_image*>(image), width, height));
  const ParamHandle param = stillPictureParam(width, height, isAlpha);
  std::vector<float> offsets;
  if (isAlpha) {
    tuneForAlpha(param.get());
  } else {
    tuneForColor(param.get(), rateFactor);
    offsets = blockOffsets(*param, rateFactor);
  }
  describeColor(param.get(), image);
  const EncoderHandle encoder = open(param.get());
  const PictureHandle picture = pictureOf(image, param.get());
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
  static_cast<Encoder*>(encoder)->rateFactor = hundredths / 100.0;
  return success;
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
    state.units = encode(image, inputClass == heif_image_input_class_alpha, state.rateFactor);
    return success;
  } catch (const std::exception&) {
    state.units.clear();
    return {heif_error_Encoder_plugin_error, heif_suberror_Unspecified, "x265 cannot encode this"};
  }
}

/// One NAL unit at a time; null after the last.
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
    .supports_lossless_compression = 0,
    .get_plugin_name = name,
    .init_plugin = nullptr,
    .cleanup_plugin = nullptr,
    .new_encoder = newEncoder,
    .free_encoder = freeEncoder,
    .set_parameter_quality = setQuality,
    .get_parameter_quality = nullptr,
    .set_parameter_lossless = nullptr,
    .get_parameter_lossless = nullptr,
    .set_parameter_logging_level = nullptr,
    .get_parameter_logging_level = nullptr,
    .list_parameters = nullptr,
    .set_parameter_integer = nullptr,
    .get_parameter_integer = nullptr,
    .set_parameter_boolean = nullptr,
    .get_parameter_boolean = nullptr,
    .set_parameter_string = nullptr,
    .get_parameter_string = nullptr,
    .query_input_colorspace = acceptedColors,
    .encode_image = encodeImage,
    .get_compressed_data = nextUnit,
    .query_input_colorspace2 = [](void*, heif_colorspace* colorspace,
                                  heif_chroma* chroma) { acceptedColors(colorspace, chroma); },
    .query_encoded_size = nullptr,
};

}  // namespace orvane
