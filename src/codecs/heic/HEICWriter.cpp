#include <new>
#include <optional>

#include "codecs/ImageDestination.h"
#include "codecs/YCbCrRows.h"
#include "codecs/heic/HEICContext.h"
#include "codecs/heic/HEICSettings.h"
#include "codecs/heic/HEVCEncoder.h"
#include "platform/graphics/RowRenderer.h"

namespace orvane {
namespace {

/// BT.601, which phones write and every reader assumes.
constexpr heif_matrix_coefficients matrix = heif_matrix_coefficients_ITU_R_BT_601_6;

// MARK: Pixels

/// The rows of a new plane of a picture.
class PlaneRows {
 public:
  PlaneRows(heif_image* image, heif_channel channel, std::size_t width, std::size_t height) {
    HEIFLibrary::check(
        heif_image_add_plane(image, channel, static_cast<int>(width), static_cast<int>(height), 8));
    memory_ = heif_image_get_plane(image, channel, &stride_);
  }

  std::uint8_t* row(std::size_t y) const { return memory_ + y * static_cast<std::size_t>(stride_); }

 private:
  int stride_ = 0;
  std::uint8_t* memory_ = nullptr;
};

HEIFImage emptyImage(std::size_t width, std::size_t height) {
  heif_image* image = nullptr;
  HEIFLibrary::check(heif_image_create(static_cast<int>(width), static_cast<int>(height),
                                       heif_colorspace_YCbCr, heif_chroma_420, &image));
  return HEIFImage(image);
}

/// `image` rendered into `space`, as planes of YCbCr 4:2:0 and, if it has it, alpha.
HEIFImage convert(const Image& image, const ColorSpacePtr& space) {
  const std::size_t width = image.width;
  const std::size_t height = image.height;
  HEIFImage result = emptyImage(width, height);
  const PlaneRows luma(result.get(), heif_channel_Y, width, height);
  const PlaneRows cb(result.get(), heif_channel_Cb, (width + 1) / 2, (height + 1) / 2);
  const PlaneRows cr(result.get(), heif_channel_Cr, (width + 1) / 2, (height + 1) / 2);
  std::optional<PlaneRows> alpha;
  if (image.alpha != AlphaKind::none)
    alpha.emplace(result.get(), heif_channel_Alpha, width, height);

  RowRenderer renderer(image, space, 8, RowRenderer::AlphaForm::straight);
  Bytes upper(width * 4);
  Bytes lower(width * 4);
  for (std::size_t y = 0; y < height; ++y) {
    Bytes& row = y % 2 == 0 ? upper : lower;
    renderer.render(y, row.data());
    if (alpha) YCbCrRows::writeAlpha(row.data(), width, alpha->row(y));
    if (y % 2 == 1 || y + 1 == height) {
      YCbCrRows::writeColor(upper.data(), row.data(), width,
                            {luma.row(y / 2 * 2), luma.row(y), cb.row(y / 2), cr.row(y / 2)});
    }
  }
  return result;
}

// MARK: Colour space

/// The matrix and range of the planes, with the code points of `space`. They are unspecified for a
/// space that has none and is written as an ICC profile instead.
HEIFColorProfile planeDescription(const ColorSpace& space) {
  HEIFColorProfile profile = owned<HEIFColorProfile>(heif_nclx_color_profile_alloc());
  const CodePoints codePoints = space.codePoints().value_or(CodePoints());
  HEIFLibrary::check(
      heif_nclx_color_profile_set_color_primaries(profile.get(), codePoints.primaries));
  HEIFLibrary::check(
      heif_nclx_color_profile_set_transfer_characteristics(profile.get(), codePoints.transfer));
  profile->matrix_coefficients = matrix;
  profile->full_range_flag = 1;
  return profile;
}

void attachICC(heif_image* image, ByteView profile) {
  HEIFLibrary::check(
      heif_image_set_raw_color_profile(image, "prof", profile.data(), profile.size()));
}

// MARK: File

heif_error append(heif_context*, const void* data, size_t size, void* file) {
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  try {
    auto& target = *static_cast<Bytes*>(file);
    target.insert(target.end(), bytes, bytes + size);
    return {heif_error_Ok, heif_suberror_Unspecified, "Success"};
  } catch (const std::bad_alloc&) {
    return {heif_error_Encoding_error, heif_suberror_Cannot_write_output_data, "no memory"};
  }
}

Bytes serialized(heif_context* context) {
  Bytes file;
  heif_writer writer{.writer_api_version = 1, .write = append};
  HEIFLibrary::check(heif_context_write(context, &writer, &file));
  return file;
}

Bytes encode(const Image& image, const PictureMeasurements& measurements, double quality,
             int threads) try {
  if (image.width == 0 || image.height == 0) throw UnwritableImage("an empty picture");
  const ColorSpacePtr space = renderingSpace(image.colorSpace);
  const HEIFImage planes = convert(image, space);
  const HEIFColorProfile description = planeDescription(*space);
  HEIFLibrary::check(heif_image_set_nclx_color_profile(planes.get(), description.get()));
  if (!space->codePoints()) attachICC(planes.get(), space->iccData());

  const HEIFContext context = makeHEICContext();
  const HEIFEncoder encoder = makeHEVCEncoder(context.get());
  HEIFLibrary::check(
      heif_encoder_set_lossy_quality(encoder.get(), HEICSettings::rateFactorInHundredths(quality)));
  HEIFLibrary::check(
      heif_encoder_set_parameter_integer(encoder.get(), hevcEncoderThreads, threads));
  HEIFLibrary::check(heif_encoder_set_parameter_integer(
      encoder.get(), hevcEncoderPhotograph,
      isPhotograph(measurements.characteristics.contentClass) ? 1 : 0));
  const HEIFEncodingOptions options = HEIFLibrary::makeEncodingOptions();
  options->output_nclx_profile = description.get();
  HEIFLibrary::check(heif_context_encode_image(context.get(), planes.get(), encoder.get(),
                                               options.get(), nullptr));
  return serialized(context.get());
} catch (const HEIFLibrary::Error& error) {
  throw UnwritableImage(error.what());
}

Bytes encodeSample(const Image& image, const PictureMeasurements& measurements, double quality) {
  return encode(image, measurements, quality, 1);
}

}  // namespace

const ImageDestination heicDestination{
    .alpha = ImageDestination::Alpha::kept,
    .maximumQuality = 1,
    .encode = encode,
    .encodeSample = encodeSample,
    .sampleShape = {.bandOfSmall = 64, .bandOfLarge = 64, .mostPixels = 400'000},
    .sampleScores = QualityTables::heicSampleScore};

}  // namespace orvane
