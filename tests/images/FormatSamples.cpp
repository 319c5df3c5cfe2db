#include "images/FormatSamples.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>

#include "images/Samples.h"
#include "support/ReadFile.h"

namespace vt {
namespace {

constexpr std::uint32_t kWidth = 200;
constexpr std::uint32_t kHeight = 100;

/// A picture for another file to hold; it stays beside that.
std::string pictureFor(const std::string& path, const char* ending) {
  std::string picture = path + ending;
  writeQuarters(picture, kWidth, kHeight);
  return picture;
}

std::string bigEndian(std::size_t number) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift);
  return bytes;
}

std::string littleEndian(std::size_t number) {
  const std::string bytes = bigEndian(number);
  return {bytes.rbegin(), bytes.rend()};
}

std::string chunk(const std::string& name, const std::string& content) {
  return name + littleEndian(content.size()) + content + std::string(content.size() % 2, '\0');
}

/// ID3 of version 2.3, whose only frame is the front cover.
std::string tagWith(const std::string& png) {
  const std::string picture = std::string("\0image/png\0\x03\0", 13) + png;
  const std::string frame = "APIC" + bigEndian(picture.size()) + std::string(2, '\0') + picture;
  std::string size;  // in bytes of 7 bits
  for (int shift = 21; shift >= 0; shift -= 7)
    size += static_cast<char>(frame.size() >> shift & 127);
  return std::string("ID3\x03\0\0", 6) + size + frame;
}

void writeWave(const std::string& path, std::string_view) {
  const std::string format = std::string("\x01\0\x01\0", 4) + littleEndian(8000) +
                             littleEndian(8000) + std::string("\x01\0\x08\0", 4);
  writeFile(path,
            chunk("RIFF", "WAVE" + chunk("fmt ", format) + chunk("data", std::string(800, '\x80')) +
                              chunk("id3 ", tagWith(readFile(pictureFor(path, ".png"))))));
}

/// A block of FLAC's that holds the front cover, which Vorbis comments carry in base64.
void writeOgg(const std::string& path, std::string_view) {
  make({"python3", "-c",
        "import base64,struct,subprocess,sys\n"
        "png=open(sys.argv[1],'rb').read()\n"
        "n=struct.pack\n"
        "block=n('>II',3,9)+b'image/png'+n('>IIIIII',0,200,100,24,0,len(png))+png\n"
        "subprocess.run(['ffmpeg','-y','-v','error','-f','lavfi','-i','anullsrc=d=0.2',"
        "'-metadata:s:a','METADATA_BLOCK_PICTURE='+base64.b64encode(block).decode(),"
        "sys.argv[2]],check=True)\n",
        pictureFor(path, ".png"), path});
}

void writeSound(const std::string& path, std::string_view ending) {
  std::vector<std::string> arguments = {"ffmpeg",
                                        "-y",
                                        "-v",
                                        "error",
                                        "-f",
                                        "lavfi",
                                        "-i",
                                        "anullsrc=d=0.2",
                                        "-i",
                                        pictureFor(path, ".png"),
                                        "-map",
                                        "0:a",
                                        "-map",
                                        "1:v",
                                        "-c:v",
                                        "copy",
                                        "-disposition:v",
                                        "attached_pic"};
  if (ending == "aiff") arguments.insert(arguments.end(), {"-write_id3v2", "1"});
  arguments.push_back(path);
  make(arguments);
}

void writeVideo(const std::string& path, std::string_view) {
  make({"ffmpeg", "-y", "-v", "error", "-loop", "1", "-t", "1", "-i", pictureFor(path, ".png"),
        "-pix_fmt", "yuv420p", path});
}

void writeDocument(const std::string& path, std::string_view ending) {
  const char* entry = "docProps/thumbnail.jpeg";
  if (ending.starts_with("od")) entry = "Thumbnails/thumbnail.png";
  if (ending == "pages" || ending == "key") entry = "preview.jpg";
  if (ending == "numbers") entry = "QuickLook/Thumbnail.jpg";
  if (ending == "epub") entry = "OEBPS/images/cover.jpg";
  writeZip(path, entry, pictureFor(path, ".jpg"));
}

std::string svg() {
  std::string drawing = "<svg xmlns='http://www.w3.org/2000/svg' width='200' height='100'>";
  const std::array<const char*, 4> colours{"#f00", "#0f0", "#00f", "#fff"};
  for (std::size_t i = 0; i < colours.size(); ++i) {
    drawing += fmt::format("<rect x='{}' y='{}' width='100' height='50' fill='{}'/>", i % 2 * 100,
                           i / 2 * 50, colours[i]);
  }
  return drawing + "</svg>";
}

std::string words() {
  std::string text;
  for (int i = 0; i < 200; ++i) text += "Some words that fill the line, and then another line. ";
  return text;
}

void writeSvg(const std::string& path, std::string_view) { writeFile(path, svg()); }
void writePdf(const std::string& path, std::string_view) { writeFile(path, pdf()); }
void writeWords(const std::string& path, std::string_view) { writeFile(path, words()); }
void writePixels(const std::string& path, std::string_view) {
  writeQuarters(path, kWidth, kHeight);
}

}  // namespace

const std::vector<SampleFormat>& sampleFormats() {
  using enum SampleShows;
  static const std::vector<SampleFormat> formats = {
      {"svg", kQuarters, writeSvg},        {"png", kQuarters, writePixels},
      {"jpg", kQuarters, writePixels},     {"gif", kQuarters, writePixels},
      {"webp", kQuarters, writePixels},    {"tiff", kQuarters, writePixels},
      {"heic", kQuarters, writePixels},    {"avif", kQuarters, writePixels},
      {"pdf", kLeftHalf, writePdf},        {"html", kWords, writeWords},
      {"xhtml", kWords, writeWords},       {"md", kWords, writeWords},
      {"cpp", kWords, writeWords},         {"json", kWords, writeWords},
      {"xml", kWords, writeWords},         {"log", kWords, writeWords},
      {"csv", kWords, writeWords},         {"txt", kWords, writeWords},
      {"docx", kQuarters, writeDocument},  {"xlsx", kQuarters, writeDocument},
      {"pptx", kQuarters, writeDocument},  {"odt", kQuarters, writeDocument},
      {"ods", kQuarters, writeDocument},   {"odp", kQuarters, writeDocument},
      {"pages", kQuarters, writeDocument}, {"numbers", kQuarters, writeDocument},
      {"key", kQuarters, writeDocument},   {"epub", kQuarters, writeDocument},
      {"mp3", kQuarters, writeSound},      {"m4a", kQuarters, writeSound},
      {"flac", kQuarters, writeSound},     {"ogg", kQuarters, writeOgg},
      {"opus", kQuarters, writeOgg},       {"aiff", kQuarters, writeSound},
      {"wav", kQuarters, writeWave},       {"mp4", kQuarters, writeVideo},
      {"mov", kQuarters, writeVideo},      {"mkv", kQuarters, writeVideo},
      {"webm", kQuarters, writeVideo},     {"avi", kQuarters, writeVideo},
      {"mpg", kQuarters, writeVideo},      {"m4v", kQuarters, writeVideo},
      {"m2ts", kQuarters, writeVideo},     {"ogv", kQuarters, writeVideo},
      {"flv", kQuarters, writeVideo},      {"wmv", kQuarters, writeVideo},
  };
  return formats;
}

void writeSample(const std::string& path) {
  const std::string_view ending = std::string_view(path).substr(path.rfind('.') + 1);
  for (const SampleFormat& format : sampleFormats()) {
    if (format.ending == ending) return format.write(path, ending);
  }
  FAIL() << "no sample is known of " << path;
}

}  // namespace vt
