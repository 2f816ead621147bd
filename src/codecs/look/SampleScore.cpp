#include "codecs/look/SampleScore.h"

#include "codecs/ImageSource.h"
#include "platform/graphics/RowRenderer.h"

namespace orvane {

SampleScore::SampleScore(const ImageDestination& destination, const Image& sample,
                         const PictureMeasurements& measurements)
    : destination_(destination), sample_(sample), measurements_(measurements), reference_(sample) {}

double SampleScore::at(double quality) const {
  const Bytes file = destination_.encodeSample(sample_, measurements_, quality);
  const Image image = ImageSource::create(file)->image();
  // The numbers as they are: the file may describe the space of the sample by another profile.
  return reference_.of(rendered(image, renderingSpace(image.colorSpace), 8));
}

}  // namespace orvane
