#include "support/HEICBuilder.h"

#include <cstring>

#include "codecs/heic/HEICContext.h"
#include "support/TestImages.h"

namespace orvane::test {
namespace {

using HEIFLibrary::check;

const heif_encoder_descriptor* libheifX265() {
  const HEIFContext context = makeHEICContext();
  const heif_encoder_descriptor* descriptor = nullptr;
  heif_context_get_encoder_descriptors(context.get(), heif_compression_HEVC, "x265", &descriptor,
                                       1);
  return descriptor;
}

HEIFEncoder makeEncoder(heif_context* context, const HEICRecipe& recipe) {
  heif_encoder* made = nullptr;
  check(heif_context_get_encoder(context, libheifX265(), &made));
  HEIFEncoder encoder(made);
  check(heif_encoder_set_lossy_quality(made, 60));
  check(heif_encoder_set_lossless(made, recipe.isLossless ? 1 : 0));
  check(heif_encoder_set_parameter_string(made, "preset", "ultrafast"));
  check(heif_encoder_set_parameter(made, "x265:sao", "1"));
  check(heif_encoder_set_parameter(made, "x265:ctu", "16"));
  check(heif_encoder_set_parameter(made, "x265:wpp", "0"));
  const char* chroma = recipe.chroma == heif_chroma_444   ? "444"
                       : recipe.chroma == heif_chroma_422 ? "422"
                                                          : "420";
  check(heif_encoder_set_parameter_string(made, "chroma", chroma));
  return encoder;
}

HEIFColorProfile colorProfile(const HEICRecipe& recipe) {
  HEIFColorProfile profile(heif_nclx_color_profile_alloc());
  const CodePoints codePoints = recipe.codePoints.value_or(CodePoints());
  check(heif_nclx_color_profile_set_color_primaries(profile.get(), codePoints.primaries));
  check(heif_nclx_color_profile_set_transfer_characteristics(profile.get(), codePoints.transfer));
  profile->matrix_coefficients = recipe.matrix;
  profile->full_range_flag = recipe.isFullRange ? 1 : 0;
  return profile;
}

/// libheif wants values of few bits in the low bits.
std::uint16_t codedValue(const Image& image, std::uint16_t value, int depth) {
  const unsigned from = image.bitsPerComponent == 8 ? 255 : 65535;
  const unsigned to = (1U << depth) - 1;
  return static_cast<std::uint16_t>((value * to + from / 2) / from);
}

HEIFImage heifImage(const Image& image, const HEICRecipe& recipe) {
  const bool alpha = image.alpha != AlphaKind::none;
  const bool deep = recipe.depth > 8;
  const heif_chroma chroma = recipe.isMonochrome ? heif_chroma_monochrome
                             : deep && alpha     ? heif_chroma_interleaved_RRGGBBAA_LE
                             : deep              ? heif_chroma_interleaved_RRGGBB_LE
                             : alpha             ? heif_chroma_interleaved_RGBA
                                                 : heif_chroma_interleaved_RGB;
  const auto width = static_cast<int>(image.width);
  const auto height = static_cast<int>(image.height);
  heif_image* made = nullptr;
  check(heif_image_create(width, height,
                          recipe.isMonochrome ? heif_colorspace_monochrome : heif_colorspace_RGB,
                          chroma, &made));
  HEIFImage result(made);
  const heif_channel channel = recipe.isMonochrome ? heif_channel_Y : heif_channel_interleaved;
  check(heif_image_add_plane(made, channel, width, height, recipe.depth));
  int stride = 0;
  std::uint8_t* plane = heif_image_get_plane(made, channel, &stride);
  const std::size_t count = recipe.isMonochrome ? 1 : alpha ? 4 : 3;
  for (std::size_t y = 0; y < image.height; ++y) {
    std::uint8_t* row = plane + y * static_cast<std::size_t>(stride);
    for (std::size_t x = 0; x < image.width; ++x) {
      const Pixel pixel = pixelAt(image, x, y);
      for (std::size_t c = 0; c < count; ++c) {
        const std::uint16_t value = codedValue(image, pixel[c], recipe.depth);
        const std::size_t at = x * count + c;
        if (deep) {
          std::memcpy(row + at * 2, &value, 2);
        } else {
          row[at] = static_cast<std::uint8_t>(value);
        }
      }
    }
  }
  heif_image_set_premultiplied_alpha(made, image.alpha == AlphaKind::premultiplied ? 1 : 0);
  return result;
}

heif_error append(heif_context*, const void* data, size_t size, void* file) {
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  static_cast<Bytes*>(file)->insert(static_cast<Bytes*>(file)->end(), bytes, bytes + size);
  return {heif_error_Ok, heif_suberror_Unspecified, "Success"};
}

void addImage(heif_context* context, const Image& image, const HEICRecipe& recipe) {
  const HEIFImage coded = heifImage(image, recipe);
  const HEIFColorProfile profile = colorProfile(recipe);
  check(heif_image_set_nclx_color_profile(coded.get(), profile.get()));
  if (!recipe.icc.empty()) {
    check(heif_image_set_raw_color_profile(coded.get(), "prof", recipe.icc.data(),
                                           recipe.icc.size()));
  }
  const HEIFEncodingOptions options = HEIFLibrary::makeEncodingOptions();
  options->output_nclx_profile = profile.get();
  options->image_orientation = recipe.orientation;
  options->macOS_compatibility_workaround_no_nclx_profile = recipe.codePoints ? 0 : 1;
  heif_image_handle* made = nullptr;
  check(heif_context_encode_image(context, coded.get(), makeEncoder(context, recipe).get(),
                                  options.get(), &made));
  const HEIFImageHandle handle(made);
  if (!recipe.exif.empty()) {
    check(heif_context_add_exif_metadata(context, made, recipe.exif.data(),
                                         static_cast<int>(recipe.exif.size())));
  }
}

}  // namespace

bool canBuildHEIC() { return libheifX265() != nullptr; }

Bytes buildHEIC(const std::vector<Image>& images, const HEICRecipe& recipe) {
  const HEIFContext context = makeHEICContext();
  for (const Image& image : images) addImage(context.get(), image, recipe);
  Bytes file;
  heif_writer writer{.writer_api_version = 1, .write = append};
  check(heif_context_write(context.get(), &writer, &file));
  return file;
}

Bytes buildHEIC(const Image& image, const HEICRecipe& recipe) {
  return buildHEIC(std::vector<Image>{image}, recipe);
}

Image decodeWithLibheif(ByteView file) {
  const HEIFContext context = makeHEICContext();
  check(
      heif_context_read_from_memory_without_copy(context.get(), file.data(), file.size(), nullptr));
  heif_image_handle* primary = nullptr;
  check(heif_context_get_primary_image_handle(context.get(), &primary));
  const HEIFImageHandle handle(primary);
  const HEIFDecodingOptions options = HEIFLibrary::makeDecodingOptions();
  options->decoder_id = "libde265";
  heif_image* made = nullptr;
  check(heif_decode_image(primary, &made, heif_colorspace_RGB, heif_chroma_444, options.get()));
  const HEIFImage decoded(made);
  const auto sample = [&](heif_channel channel, std::size_t x, std::size_t y) -> std::uint16_t {
    int stride = 0;
    const std::uint8_t* plane = heif_image_get_plane_readonly(made, channel, &stride);
    return plane[y * static_cast<std::size_t>(stride) + x];
  };
  return drawImage(static_cast<std::size_t>(heif_image_get_primary_width(made)),
                   static_cast<std::size_t>(heif_image_get_primary_height(made)),
                   ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
                   [&](std::size_t x, std::size_t y) -> Pixel {
                     return {sample(heif_channel_R, x, y), sample(heif_channel_G, x, y),
                             sample(heif_channel_B, x, y), 255};
                   });
}

}  // namespace orvane::test
