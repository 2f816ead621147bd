#include "support/AVIFBuilder.h"

#include <stdexcept>

#include "codecs/avif/AVIFLibrary.h"

namespace orvane::test {
namespace {

void require(avifResult result) {
  if (result != AVIF_RESULT_OK) throw std::runtime_error(avifResultToString(result));
}

#if AVIF_VERSION_MAJOR >= 1
void setMirrorAxis(avifImage& picture, std::uint8_t axis) { picture.imir.axis = axis; }
void setExif(avifImage& picture, const Bytes& block) {
  require(avifImageSetMetadataExif(&picture, block.data(), block.size()));
}
#else
void setMirrorAxis(avifImage& picture, std::uint8_t axis) { picture.imir.mode = axis; }
void setExif(avifImage& picture, const Bytes& block) {
  avifImageSetMetadataExif(&picture, block.data(), block.size());
}
#endif

void setTransforms(avifImage& picture, const AVIFRecipe& recipe) {
  picture.transformFlags = AVIF_TRANSFORM_NONE;  // libavif takes over what EXIF says
  if (recipe.quarterTurns) {
    picture.transformFlags |= AVIF_TRANSFORM_IROT;
    picture.irot.angle = *recipe.quarterTurns;
  }
  if (recipe.mirrorAxis) {
    picture.transformFlags |= AVIF_TRANSFORM_IMIR;
    setMirrorAxis(picture, *recipe.mirrorAxis);
  }
  if (recipe.crop) {
    picture.transformFlags |= AVIF_TRANSFORM_CLAP;
    picture.clap = *recipe.crop;
  }
}

AVIFLibrary::Picture convert(const Image& image, const AVIFRecipe& recipe) {
  auto picture = AVIFLibrary::makePicture(static_cast<std::uint32_t>(image.width),
                                          static_cast<std::uint32_t>(image.height), recipe.depth,
                                          recipe.format);
  picture->yuvRange = recipe.range;
  picture->colorPrimaries = recipe.codePoints.primaries;
  picture->transferCharacteristics = recipe.codePoints.transfer;
  picture->matrixCoefficients = recipe.matrix;
  picture->alphaPremultiplied = recipe.isPremultiplied;
  if (!recipe.icc.empty()) AVIFLibrary::setICCProfile(*picture, recipe.icc);

  avifRGBImage source{};
  avifRGBImageSetDefaults(&source, picture.get());
  source.depth = static_cast<std::uint32_t>(image.bitsPerComponent);
  source.alphaPremultiplied = recipe.isPremultiplied;
  source.ignoreAlpha = image.alpha == AlphaKind::none;
  source.avoidLibYUV = AVIF_TRUE;
  source.pixels = const_cast<std::uint8_t*>(image.pixels.get());
  source.rowBytes = static_cast<std::uint32_t>(image.bytesPerRow);
  require(avifImageRGBToYUV(picture.get(), &source));

  if (!recipe.exif.empty()) setExif(*picture, recipe.exif);
  setTransforms(*picture, recipe);
  return picture;
}

AVIFLibrary::Encoder losslessEncoder() {
  auto encoder = AVIFLibrary::makeEncoder();
  encoder->codecChoice = AVIF_CODEC_CHOICE_AOM;
  encoder->maxThreads = 1;
  encoder->speed = AVIF_SPEED_FASTEST;
  AVIFLibrary::setQuantizers(*encoder, {.color = 0, .alpha = 0});
  return encoder;
}

Bytes finish(avifEncoder& encoder) {
  AVIFLibrary::Output output;
  require(avifEncoderFinish(&encoder, &output.data));
  return Bytes(output.data.data, output.data.data + output.data.size);
}

}  // namespace

Bytes buildAVIF(const Image& image, const AVIFRecipe& recipe) {
  const auto encoder = losslessEncoder();
  require(avifEncoderAddImage(encoder.get(), convert(image, recipe).get(), 1,
                              AVIF_ADD_IMAGE_FLAG_SINGLE));
  return finish(*encoder);
}

Bytes buildAVIFGrid(const std::vector<Image>& cells, std::uint32_t columns) {
  std::vector<AVIFLibrary::Picture> pictures;
  std::vector<const avifImage*> views;
  for (const Image& cell : cells) views.push_back(pictures.emplace_back(convert(cell, {})).get());
  const auto encoder = losslessEncoder();
  require(avifEncoderAddImageGrid(encoder.get(), columns,
                                  static_cast<std::uint32_t>(cells.size()) / columns, views.data(),
                                  AVIF_ADD_IMAGE_FLAG_SINGLE));
  return finish(*encoder);
}

Bytes buildAVIFSequence(const std::vector<Image>& frames) {
  const auto encoder = losslessEncoder();
  for (const Image& frame : frames) {
    require(
        avifEncoderAddImage(encoder.get(), convert(frame, {}).get(), 1, AVIF_ADD_IMAGE_FLAG_NONE));
  }
  return finish(*encoder);
}

}  // namespace orvane::test
