// Compresses files into a folder as WebP, tells of each as it finishes, and starts no more after a
// failure:  compress-batch FOLDER SOURCE...
#include <orvane/orvane.h>

#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

int main(int argc, char** argv) try {
  if (argc < 3) throw std::invalid_argument("compress-batch FOLDER SOURCE...");
  const std::vector<std::string> sources(argv + 2, argv + argc);
  bool hasFailed = false;
  const auto tell = [&](std::size_t index, const orvane::ImageCompressionResult& result) {
    std::cout << index + 1 << " of " << sources.size() << ", " << result.path << ": ";
    if (result.error) {
      std::cout << *result.error << std::endl;
      hasFailed = true;
    } else {
      std::cout << result.originalSizeBytes << " -> " << *result.compressedSizeBytes << " bytes, "
                << *result.destination << std::endl;
    }
  };
  orvane::compressFiles(sources, argv[1], orvane::ImageFormat::webp, 75,
                        {.onResult = tell, .isStopped = [&] { return hasFailed; }});
  return hasFailed ? 1 : 0;
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
