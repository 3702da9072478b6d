#include <charconv>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>

#include "BorrowedFeatures.h"
#include "Changes.h"
#include "Checks.h"
#include "Commands.h"
#include "Interrupt.h"
#include "Progress.h"
#include "ShowValues.h"

namespace tool {
namespace {

struct ChunksOptions {
  std::vector<std::string> enable;
  int frames = 1;
  bool csv = false;
  std::string buffer;
  std::vector<std::string> chunks;
};

// A line of comma-separated values; what contains a comma, quote or line end stands in quotes.
std::string csvLine(const std::vector<Json>& fields) {
  std::string line;
  for (const Json& field : fields) {
    std::string text = field.is_string() ? field.get<std::string>() : field.is_null() ? "" : field.dump();
    if (text.find_first_of(",\"\r\n") != text.npos) {
      for (size_t at = 0; (at = text.find('"', at)) != text.npos; at += 2) text.insert(at, 1, '"');
      text.insert(0, 1, '"');
      text += '"';
    }
    line += (&field == &fields.front() ? "" : ",") + text;
  }
  return line + '\n';
}

// Prints the images' chunk features: lines for people, one JSON document an image, or a table with the columns that the
// first image has.
class Images {
 public:
  Images(Session& session, bool csv) : session_(session), csv_(csv) {}

  void show(const Image& image, const std::vector<const Node*>& features) {
    const Output& output = session_.output();
    chunks_ += image.chunks.size();
    if (csv_) {
      row(image, valuesJson(session_, features));
    } else if (output.json()) {
      output.record({{"frame", image.frameId},
                     {"bytes", image.data.size()},
                     {"chunks", image.chunks.size()},
                     {"features", valuesJson(session_, features)}});
      return;
    } else {
      output.line(output.name("frame " + std::to_string(image.frameId)) + ", " + std::to_string(image.data.size()) +
                  " bytes, " + std::to_string(image.chunks.size()) + " chunks");
      showValues(session_, features);
    }
    std::fflush(stdout);
  }

  // Of all images shown.
  size_t chunks() const { return chunks_; }

 private:
  void row(const Image& image, const Json& values) {
    if (columns_.empty()) {
      columns_ = {"frame", "bytes"};
      for (const auto& [name, value] : values.items()) columns_.emplace_back(name);
      session_.output().data(csvLine(columns_));
    }
    std::vector<Json> fields{image.frameId, image.data.size()};
    for (size_t column = fields.size(); column < columns_.size(); ++column) {
      const auto found = values.find(columns_[column].get<std::string>());
      fields.push_back(found == values.end() || found->is_object() ? Json() : *found);
    }
    session_.output().data(csvLine(fields));
  }

  Session& session_;
  bool csv_;
  std::vector<Json> columns_;
  size_t chunks_ = 0;
};

// The image's chunks are attached only while the result lives: the features must not look into a buffer that is gone.
oxgenapi::AttachedChunks attached(const NodeMap& map, Image& image) {
  std::vector<TChunkData> records;
  for (const Chunk& chunk : image.chunks) records.push_back({chunk.id, image.data.data(), chunk.offset, chunk.length});
  return {map, records.data(), records.size()};
}

void acquire(Session& session, const ChunksOptions& options) {
  const NodeMap& map = session.map();
  BorrowedFeatures borrowed(map);
  borrowed.set("ChunkModeActive", "true");
  borrowed.switchOn({"ChunkSelector", "ChunkEnable", "true", "false"}, options.enable);
  Changes changes(map, valueFeatures(map));
  Images images(session, options.csv);
  Progress progress(session.output(), "chunks", static_cast<uint64_t>(options.frames), "frames");
  const Interrupt interrupt;
  borrowed.execute("AcquisitionStart", "AcquisitionStop");
  for (int frame = 0; frame < options.frames && !interrupt.requested(); ++frame) {
    progress.reach(static_cast<uint64_t>(frame));
    Image image = session.device().nextImage();
    if (image.data.empty()) {
      session.report(Failure(OXGENAPI_E_UNSPECIFIED, "The device sends no image now"));
      break;
    }
    changes.take();
    const oxgenapi::AttachedChunks chunks = attached(map, image);
    progress.clear();
    images.show(image, changes.take());
  }
  borrowed.putBack();
  if (images.chunks() == 0 && !session.output().json()) session.output().hint("The images have no chunks.");
}

// "a001:0:8": ID in hexadecimal digits, offset and length in bytes.
Chunk parse(const std::string& text, size_t bufferSize) {
  Chunk chunk;
  const char* end = text.data() + text.size();
  const auto id = std::from_chars(text.data(), end, chunk.id, 16);
  if (id.ec == std::errc() && id.ptr != end && *id.ptr == ':') {
    const auto offset = std::from_chars(id.ptr + 1, end, chunk.offset);
    if (offset.ec == std::errc() && offset.ptr != end && *offset.ptr == ':') {
      const auto length = std::from_chars(offset.ptr + 1, end, chunk.length);
      const auto size = static_cast<int64_t>(bufferSize);
      if (length.ec == std::errc() && length.ptr == end && chunk.offset >= 0 && chunk.offset <= size &&
          chunk.length > 0 && chunk.length <= size - chunk.offset)
        return chunk;
    }
  }
  throw UsageError("chunks: '" + text + "' is not ID:OFFSET:LENGTH inside the buffer's " + std::to_string(bufferSize) +
                   " bytes");
}

void attach(Session& session, const ChunksOptions& options) {
  std::ifstream file(options.buffer, std::ios::binary);
  Image image;
  image.data.assign(std::istreambuf_iterator<char>(file), {});
  for (const std::string& chunk : options.chunks) image.chunks.push_back(parse(chunk, image.data.size()));
  Changes changes(session.map(), valueFeatures(session.map()));
  const oxgenapi::AttachedChunks chunks = attached(session.map(), image);
  Images(session, options.csv).show(image, changes.take());
}

}  // namespace

void addChunks(const Command& program) {
  auto options = std::make_shared<ChunksOptions>();
  const Command chunks =
      program.subcommand("chunks", "Take images with the device and show the features in their chunks");
  chunks.footer(
      "Example:\n"
      "  oxgenapi chunks --frames 3\n"
      "  oxgenapi chunks --enable Timestamp,ExposureTime --frames 2\n"
      "  oxgenapi chunks --enable Timestamp --frames 100 --csv > frames.csv");
  chunks
      .option("--enable", options->enable,
              "The chunks to be sent meanwhile, entries of ChunkSelector (default: those that are on, or all)")
      .separator(',')
      .type("CHUNK,...");
  chunks.option("--frames", options->frames, "Number of images").check(between(1, 1'000'000)).showDefault();
  chunks.flag("--csv", options->csv, "Print a table: comma-separated values, one line an image");
  chunks.runsAlone([options](Session& session) { acquire(session, *options); });
  const Command given = chunks.subcommand("attach", "Attach chunks of a buffer in a file instead");
  given.option("buffer", options->buffer, "File with the buffer").required().type("FILE").check(existingFile());
  given.option("chunk", options->chunks, "Chunks: hexadecimal ID, offset and length in bytes")
      .required()
      .type("ID:OFFSET:LENGTH");
  given.footer("Example:\n  oxgenapi chunks attach image.bin a001:307200:8");
  given.runs([options](Session& session) { attach(session, *options); });
  // The command without a word does the same.
  chunks.hiddenSubcommand("acquire", "Take images with the device").runs([options](Session& session) {
    acquire(session, *options);
  });
}

}  // namespace tool
