#include <new>

#include "codecs/ImageItems.h"
#include "codecs/ImageLimits.h"
#include "codecs/ImageSource.h"
#include "codecs/avif/AVIFLibrary.h"
#include "platform/graphics/ICCProfile.h"

namespace orvane {
namespace {

void require(avifResult result) {
  if (result == AVIF_RESULT_OUT_OF_MEMORY) throw std::bad_alloc();
  if (result != AVIF_RESULT_OK) throw UnreadableImage(avifResultToString(result));
}

/// A file without a primary item is a sequence, whose pictures are in tracks.
bool recognises(ByteView file) {
  const auto coding = ImageItems(file).coding();
  return coding ? coding == "av01" : ISOBaseMedia::hasBrand(file, "avis");
}

/// The transformative properties of the item itself, in the order that ISO/IEC 23000-22, 7.3.6.7
/// prescribes: clap, irot, imir.
TransformativeProperties ownTransformations(const avifImage& picture) {
  TransformativeProperties result(picture.width, picture.height);
  if ((picture.transformFlags & AVIF_TRANSFORM_CLAP) != 0) {
    const avifCleanApertureBox& box = picture.clap;
    result.crop({{box.widthN, box.widthD},
                 {box.heightN, box.heightD},
                 {box.horizOffN, box.horizOffD},
                 {box.vertOffN, box.vertOffD}});
  }
  if ((picture.transformFlags & AVIF_TRANSFORM_IROT) != 0) result.turn(picture.irot.angle & 3);
  if ((picture.transformFlags & AVIF_TRANSFORM_IMIR) != 0) {
    using Mirror = TransformativeProperties::Mirror;
    const bool exchangesSides = (AVIFLibrary::mirrorAxis(picture) & 1) != 0;
    result.mirror(exchangesSides ? Mirror::leftRight : Mirror::topBottom);
  }
  return result;
}

ByteView iccOf(const avifImage& picture) { return {picture.icc.data, picture.icc.size}; }

ColorSpacePtr colorSpaceOf(const avifImage& picture, ColorSpace::Model model) {
  const ByteView icc = iccOf(picture);
  ImageLimits::checkICC(icc.size());
  if (!icc.empty()) return ColorSpace::fromICC(icc, model);
  return ColorSpace::fromCodePoints({picture.colorPrimaries, picture.transferCharacteristics},
                                    model);
}

/// libavif cannot convert constant luminance. The matrices of non-constant luminance have the same
/// coefficients and show such pictures nearly right.
void replaceConstantLuminance(avifImage& picture) {
  if (picture.matrixCoefficients == AVIF_MATRIX_COEFFICIENTS_BT2020_CL) {
    picture.matrixCoefficients = AVIF_MATRIX_COEFFICIENTS_BT2020_NCL;
  } else if (picture.matrixCoefficients == AVIF_MATRIX_COEFFICIENTS_CHROMA_DERIVED_CL) {
    picture.matrixCoefficients = AVIF_MATRIX_COEFFICIENTS_CHROMA_DERIVED_NCL;
  }
}

/// libyuv is many times as fast as libavif's own conversion, but its coefficients have 8 bits. The
/// greatest coefficient of every matrix but BT.601's does not fit when it also stretches a limited
/// range: blues would be wrong by 10 of 255.
bool outgrowsLibYUV(const avifImage& picture) {
  return picture.yuvRange == AVIF_RANGE_LIMITED &&
         picture.matrixCoefficients != AVIF_MATRIX_COEFFICIENTS_BT601 &&
         picture.matrixCoefficients != AVIF_MATRIX_COEFFICIENTS_BT470BG;
}

AlphaKind alphaOf(const avifImage& picture) {
  if (picture.alphaPlane == nullptr) return AlphaKind::none;
  return picture.alphaPremultiplied ? AlphaKind::premultiplied : AlphaKind::straight;
}

/// The picture as R, G, B, A of 8 bits, or of 16 when it has more than 8.
Image render(const avifImage& picture) {
  Image image{.width = picture.width,
              .height = picture.height,
              .bitsPerComponent = picture.depth > 8 ? 16 : 8,
              .layout = ChannelLayout::rgba,
              .alpha = alphaOf(picture),
              .colorSpace = colorSpaceOf(picture, ColorSpace::Model::rgb)};
  avifRGBImage target{};
  avifRGBImageSetDefaults(&target, &picture);
  target.depth = static_cast<std::uint32_t>(image.bitsPerComponent);
  target.avoidLibYUV = outgrowsLibYUV(picture);
  target.chromaUpsampling = AVIF_CHROMA_UPSAMPLING_BEST_QUALITY;
  target.alphaPremultiplied = picture.alphaPremultiplied;
  target.pixels = allocatePackedRows(image);
  target.rowBytes = static_cast<std::uint32_t>(image.bytesPerRow);
  require(avifImageYUVToRGB(&picture, &target));
  return image;
}

/// A grey picture that was rendered as RGBA, as grey and, if it has it, alpha: a grey profile needs
/// this layout.
template <typename Component>
Image asGray(const Image& rendered, const ColorSpacePtr& colorSpace) {
  Image gray = rendered;
  gray.layout = rendered.alpha == AlphaKind::none ? ChannelLayout::gray : ChannelLayout::grayAlpha;
  gray.colorSpace = colorSpace;
  auto* out = reinterpret_cast<Component*>(allocatePackedRows(gray));
  for (std::size_t y = 0; y < rendered.height; ++y) {
    const auto* in = reinterpret_cast<const Component*>(rendered.row(y));
    for (std::size_t x = 0; x < rendered.width; ++x, in += 4) {
      *out++ = in[0];
      if (gray.layout == ChannelLayout::grayAlpha) *out++ = in[3];
    }
  }
  return gray;
}

class AVIFSource final : public ImageSource {
 public:
  explicit AVIFSource(ByteView file);

  Image image() override;

 private:
  /// The transformations of the picture that libavif has read and of identity derivations of it.
  TransformativeProperties transformations() const {
    TransformativeProperties properties = ownTransformations(*decoder_->image);
    items_.addTransformations(properties);
    return properties;
  }

  ImageItems items_;
  Bytes patchedFile_;  ///< empty when the file has no identity derivations
  AVIFLibrary::Decoder decoder_ = AVIFLibrary::makeDecoder();
};

AVIFSource::AVIFSource(ByteView file) : ImageSource(ImageFormat::avif), items_(file) {
  items_.checkReferences();
  patchedFile_ = items_.withoutIdentities();  // libavif cannot read them
  if (!patchedFile_.empty()) file = patchedFile_;
  decoder_->codecChoice = AVIF_CODEC_CHOICE_DAV1D;
  decoder_->maxThreads = 1;
  // Many good files lack pixi, lack ispe of the alpha item or have an odd crop.
  decoder_->strictFlags = AVIF_STRICT_DISABLED;
  decoder_->ignoreExif = AVIF_TRUE;
  decoder_->ignoreXMP = AVIF_TRUE;
  decoder_->imageDimensionLimit = ImageLimits::maximumSide;
  require(avifDecoderSetIOMemory(decoder_.get(), file.data(), file.size()));
  require(avifDecoderParse(decoder_.get()));
  const avifImage& header = *decoder_->image;
  setSize(header.width, header.height, header.depth > 8 ? 8 : 4);
  setFrameCount(static_cast<std::size_t>(decoder_->imageCount));
  setOrientation(transformations().orientation());
}

Image AVIFSource::image() {
  require(avifDecoderNthImage(decoder_.get(), 0));
  replaceConstantLuminance(*decoder_->image);
  const avifImage& picture = *decoder_->image;
  Image image = render(picture);
  if (picture.yuvFormat == AVIF_PIXEL_FORMAT_YUV400 && ICCProfile::isForGray(iccOf(picture))) {
    const auto gray = colorSpaceOf(picture, ColorSpace::Model::gray);
    image = image.bitsPerComponent == 8 ? asGray<std::uint8_t>(image, gray)
                                        : asGray<std::uint16_t>(image, gray);
  }
  return transformations().cropped(image);
}

}  // namespace

const ImageReader avifReader{recognises, openAs<AVIFSource>};

}  // namespace orvane
