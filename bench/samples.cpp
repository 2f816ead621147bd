// Prints the mean score that samples of pictures have at each quality:
//   orvane-samples FORMAT QUALITY,… PICTURE…

#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "codecs/look/PictureSample.h"
#include "codecs/look/SampleScore.h"
#include "picture/RGBABuffer.h"
#include "pipeline/ImageAnalyzer.h"
#include "pipeline/ImageDecoder.h"
#include "platform/foundation/Files.h"

namespace {

using namespace orvane;

std::vector<double> parseQualities(const std::string& list) {
  std::istringstream stream(list);
  std::vector<double> qualities;
  for (std::string quality; std::getline(stream, quality, ',');) {
    qualities.push_back(std::stod(quality));
  }
  return qualities;
}

Image pictureIn(const char* path) {
  const Bytes file = Files::readWhole(path);
  return ImageDecoder::decode(*ImageDecoder::open(file)).image;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 4) {
    std::cerr << "orvane-samples FORMAT QUALITY,... PICTURE...\n";
    return EXIT_FAILURE;
  }
  const ImageDestination& destination =
      *ImageDestination::of(*ImageFormat::fromRawValue(arguments[1]));
  const std::vector<double> qualities = parseQualities(arguments[2]);
  std::vector<double> sums(qualities.size());
  int samples = 0;
  for (int i = 3; i < count; ++i) {
    const Image image = pictureIn(arguments[i]);
    const auto sample = sampleOf(image, destination.sampleShape);
    if (!sample) continue;
    const PictureMeasurements measurements =
        measure(image, ImageAnalyzer::analyze(RGBABuffer(image)));
    const SampleScore score(destination, *sample, measurements);
    for (std::size_t k = 0; k < qualities.size(); ++k) sums[k] += score.at(qualities[k]);
    ++samples;
  }
  if (samples == 0) {
    std::cerr << "no picture is large enough for a sample\n";
    return EXIT_FAILURE;
  }
  for (const double sum : sums) std::cout << sum / samples << '\n';
}
