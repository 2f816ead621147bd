// Says what a picture is taken for, and writes it as WebP:  compress-in-memory SOURCE OUTPUT
#include <orvane/orvane.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <variant>

int main(int argc, char** argv) try {
  if (argc != 3) throw std::invalid_argument("compress-in-memory SOURCE OUTPUT");
  std::ifstream file(argv[1], std::ios::binary);
  const orvane::Bytes source{std::istreambuf_iterator<char>(file), {}};

  constexpr orvane::ImageFormat format = orvane::ImageFormat::webp;
  constexpr double quality = 75;
  const auto [sourceFormat, picture, plan] = orvane::analyze(source, format, quality);
  std::cout << sourceFormat.displayName() << ", " << picture.width << " x " << picture.height
            << (std::holds_alternative<orvane::EncodingPlan::Lossy>(plan.mode) ? ", lossy" : "")
            << '\n';

  const orvane::Bytes output = orvane::compress(source, format, quality);
  std::ofstream(argv[2], std::ios::binary)
      .write(reinterpret_cast<const char*>(output.data()),
             static_cast<std::streamsize>(output.size()));
  std::cout << source.size() << " -> " << output.size() << " bytes\n";
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
