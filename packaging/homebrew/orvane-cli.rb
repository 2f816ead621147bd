# Whoever publishes the sources puts their address here, and this file into the tap's folder Formula.
class OrvaneCli < Formula
  desc "Compress image files in batches"
  homepage "https://example.org/orvane-cli"
  license "GPL-3.0-or-later"
  head "https://example.org/orvane-cli.git", branch: "main"

  depends_on "cmake" => :build
  depends_on "ninja" => :build
  depends_on "nlohmann-json" => :build
  depends_on "pkgconf" => :build
  depends_on "gettext"
  depends_on "icu4c"
  depends_on "jpeg-turbo"
  depends_on "jpeg-xl"
  depends_on "libavif"
  depends_on "libde265"
  depends_on "libexif"
  depends_on "libheif"
  depends_on "libimagequant"
  depends_on "libomp"
  depends_on "libpng"
  depends_on "little-cms2"
  depends_on "ossp-uuid"
  depends_on "webp"
  depends_on "x265"

  def install
    system "cmake", "-S", ".", "-B", "build", "-G", "Ninja", *std_cmake_args
    system "cmake", "--build", "build"
    system "cmake", "--install", "build"
    pkgshare.install "examples/photo.png"
  end

  test do
    system bin/"orvane-cli", pkgshare/"photo.png", "--output", testpath, "--format", "webp"
    assert_path_exists testpath/"photo.webp"
  end
end
