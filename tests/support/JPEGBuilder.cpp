#include "support/JPEGBuilder.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <stdexcept>

#include "codecs/jpeg/JPEGLibrary.h"

namespace orvane::test {
namespace {

/// The memory that libjpeg allocates and the caller frees.
struct Output {
  unsigned char* memory = nullptr;
  unsigned long size = 0;

  ~Output() { std::free(memory); }
};

J_COLOR_SPACE colorsOf(const Image& image) {
  switch (image.layout) {
    case ChannelLayout::gray:
      return JCS_GRAYSCALE;
    case ChannelLayout::rgba:
      return JCS_EXT_RGBX;
    case ChannelLayout::cmyk:
      return JCS_CMYK;
    case ChannelLayout::grayAlpha:
      return JCS_UNKNOWN;
    default:
      throw std::runtime_error("a layout that libjpeg does not take");
  }
}

void configure(JPEGCompressor& info, const Image& image, const JPEGRecipe& recipe) {
  info.image_width = static_cast<JDIMENSION>(image.width);
  info.image_height = static_cast<JDIMENSION>(image.height);
  info.input_components = static_cast<int>(channelCount(image.layout));
  info.in_color_space = colorsOf(image);
  jpeg_set_defaults(&info);
  jpeg_set_colorspace(&info, recipe.stored);
  jpeg_set_quality(&info, recipe.quality, TRUE);
  info.comp_info[0].h_samp_factor = recipe.horizontalSampling;
  info.comp_info[0].v_samp_factor = recipe.verticalSampling;
  info.arith_code = recipe.isArithmetic ? TRUE : FALSE;
  info.restart_interval = recipe.restartInterval;
  if (recipe.hasAdobeMarker) info.write_Adobe_marker = *recipe.hasAdobeMarker ? TRUE : FALSE;
  if (recipe.hasJFIFMarker) info.write_JFIF_header = *recipe.hasJFIFMarker ? TRUE : FALSE;
  if (recipe.isProgressive) jpeg_simple_progression(&info);
  if (recipe.scans.empty()) return;
  info.scan_info = recipe.scans.data();
  info.num_scans = static_cast<int>(recipe.scans.size());
}

void append(Bytes& bytes, std::uint32_t value, int size, ByteOrder order) {
  for (int i = 0; i < size; ++i) {
    const int shift = 8 * (order == ByteOrder::little ? i : size - 1 - i);
    bytes.push_back(static_cast<std::uint8_t>(value >> shift));
  }
}

}  // namespace

Bytes buildJPEG(const Image& image, const JPEGRecipe& recipe) {
  JPEGErrors errors;
  Output output;
  JPEGCompressor info;
  info.err = &errors;
  errors.run<std::runtime_error>([&] {
    jpeg_create_compress(&info);
    jpeg_mem_dest(&info, &output.memory, &output.size);
    configure(info, image, recipe);
    jpeg_start_compress(&info, TRUE);
    for (const JPEGSegment& segment : recipe.segments) {
      jpeg_write_marker(&info, segment.marker, segment.data.data(),
                        static_cast<unsigned>(segment.data.size()));
    }
    while (info.next_scanline < info.image_height) {
      auto* row = const_cast<JSAMPROW>(image.row(info.next_scanline));
      jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
  });
  return Bytes(output.memory, output.memory + output.size);
}

std::vector<jpeg_scan_info> manyScans(int count) {
  constexpr int highestBit = 9;
  std::vector<jpeg_scan_info> scans{{1, {0, 0, 0, 0}, 0, 0, 0, 0}};
  for (int k = 1; k <= 63; ++k) {
    for (int bit = highestBit; bit >= 0; --bit) {
      if (static_cast<int>(scans.size()) == count) return scans;
      scans.push_back({1, {0, 0, 0, 0}, k, k, bit == highestBit ? 0 : bit + 1, bit});
    }
  }
  throw std::runtime_error("not so many scans");
}

std::size_t findMarker(ByteView file, int code, std::size_t from) {
  std::size_t at = from;
  while (at + 4 <= file.size()) {
    if (file[at] != 0xFF || file[at + 1] == 0xFF || file[at + 1] == 0) {
      ++at;
      continue;
    }
    const int found = file[at + 1];
    if (found == code) return at;
    const bool standsAlone = found >= 0xD0 && found <= 0xD9;
    at += standsAlone ? 2 : 2 + (std::size_t{file[at + 2]} << 8 | file[at + 3]);
  }
  if (at + 2 <= file.size() && file[at + 1] == code) return at;
  throw std::runtime_error("no such marker");
}

std::size_t firstScanData(ByteView file) {
  constexpr int startOfScan = 0xDA;
  const std::size_t at = findMarker(file, startOfScan);
  return at + 2 + (std::size_t{file[at + 2]} << 8 | file[at + 3]);
}

Bytes inserted(ByteView file, std::size_t at, ByteView bytes) {
  Bytes result(file.begin(), file.end());
  result.insert(result.begin() + static_cast<std::ptrdiff_t>(at), bytes.begin(), bytes.end());
  return result;
}

Bytes without(ByteView file, std::size_t at, std::size_t count) {
  Bytes result(file.begin(), file.end());
  const auto first = result.begin() + static_cast<std::ptrdiff_t>(at);
  result.erase(first, first + static_cast<std::ptrdiff_t>(count));
  return result;
}

Bytes exifBlock(std::uint32_t orientation, ByteOrder order, int type) {
  constexpr std::array sizes{0, 1, 1, 2, 4, 8, 1, 1, 2, 4};  // of the types of TIFF 6.0
  const int size = sizes.at(static_cast<std::size_t>(type));
  constexpr std::uint32_t orientationTag = 0x0112;
  const bool isLittle = order == ByteOrder::little;
  Bytes block(2, isLittle ? 'I' : 'M');
  append(block, 42, 2, order);
  append(block, 8, 4, order);  // the first directory follows
  append(block, 1, 2, order);  // of one entry
  append(block, orientationTag, 2, order);
  append(block, static_cast<std::uint32_t>(type), 2, order);
  append(block, 1, 4, order);
  append(block, orientation, size, order);
  append(block, 0, 4 - size, order);
  append(block, 0, 4, order);  // no further directory
  return block;
}

JPEGSegment exifSegment(std::uint32_t orientation, int type) {
  Bytes data{'E', 'x', 'i', 'f', 0, 0};
  const Bytes block = exifBlock(orientation, ByteOrder::big, type);
  data.insert(data.end(), block.begin(), block.end());
  return {0xE1, data};
}

std::vector<JPEGSegment> profileSegments(ByteView profile, std::size_t partSize) {
  const std::size_t count = (profile.size() + partSize - 1) / partSize;
  std::vector<JPEGSegment> segments;
  for (std::size_t number = 1; number <= count; ++number) {
    constexpr std::string_view signature("ICC_PROFILE\0", 12);
    Bytes data(signature.begin(), signature.end());
    data.push_back(static_cast<std::uint8_t>(number));
    data.push_back(static_cast<std::uint8_t>(count));
    const std::size_t begin = (number - 1) * partSize;
    const ByteView part = profile.subspan(begin, std::min(partSize, profile.size() - begin));
    data.insert(data.end(), part.begin(), part.end());
    segments.push_back({0xE2, data});
  }
  return segments;
}

}  // namespace orvane::test
