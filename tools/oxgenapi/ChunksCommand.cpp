#include <charconv>
#include <fstream>
#include <iterator>
#include <memory>

#include "Changes.h"
#include "Commands.h"
#include "ShowValues.h"

namespace tool {
namespace {

struct ChunksOptions {
  std::vector<std::string> enable;
  int frames = 1;
  std::string buffer;
  std::vector<std::string> chunks;
};

void show(Session& session, const Image& image, Changes& changes) {
  const Output& output = session.output();
  if (!output.json()) {
    output.line(output.name("frame " + std::to_string(image.frameId)) + ", " + std::to_string(image.data.size()) +
                " bytes, " + std::to_string(image.chunks.size()) + " chunks");
  }
  const Json features = showValues(session, changes.take());
  if (output.json()) {
    output.record({{"frame", image.frameId},
                   {"bytes", image.data.size()},
                   {"chunks", image.chunks.size()},
                   {"features", features}});
  }
}

// The image's chunks are attached only while the result lives: the features must not look into a buffer that is gone.
oxgenapi::AttachedChunks attached(const NodeMap& map, Image& image) {
  std::vector<TChunkData> records;
  for (const Chunk& chunk : image.chunks) {
    records.push_back({chunk.id, image.data.data(), chunk.offset, chunk.length});
  }
  return {map, records.data(), records.size()};
}

void acquire(Session& session, const ChunksOptions& options) {
  const NodeMap& map = session.map();
  if (!options.enable.empty()) {
    map.node("ChunkModeActive").set("true");
  }
  for (const std::string& chunk : options.enable) {
    map.node("ChunkSelector").set(chunk);
    map.node("ChunkEnable").set("true");
  }
  Changes changes(map, valueFeatures(map));
  map.node("AcquisitionStart").execute();
  for (int frame = 0; frame < options.frames; ++frame) {
    Image image = session.device().nextImage();
    if (image.data.empty()) {
      session.report(Failure(OXGENAPI_E_UNSPECIFIED, "The device sends no image now"));
      break;
    }
    changes.take();
    const oxgenapi::AttachedChunks chunks = attached(map, image);
    show(session, image, changes);
  }
  map.node("AcquisitionStop").execute();
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
          chunk.length > 0 && chunk.length <= size - chunk.offset) {
        return chunk;
      }
    }
  }
  throw UsageError("chunks: '" + text + "' is not ID:OFFSET:LENGTH inside the buffer's " + std::to_string(bufferSize) +
                   " bytes");
}

void attach(Session& session, const ChunksOptions& options) {
  std::ifstream file(options.buffer, std::ios::binary);
  Image image;
  image.data.assign(std::istreambuf_iterator<char>(file), {});
  for (const std::string& chunk : options.chunks) {
    image.chunks.push_back(parse(chunk, image.data.size()));
  }
  Changes changes(session.map(), valueFeatures(session.map()));
  const oxgenapi::AttachedChunks chunks = attached(session.map(), image);
  show(session, image, changes);
}

}  // namespace

void addChunks(CLI::App& app, Action& chosen) {
  auto options = std::make_shared<ChunksOptions>();
  CLI::App* chunks = app.add_subcommand("chunks", "Attach the chunk data of images and show the features in it");
  chunks->require_subcommand(1);
  chunks->fallthrough();
  chunks->footer("Example:\n  oxgenapi chunks acquire --enable Timestamp,ExposureTime --frames 2");
  CLI::App* live = chunks->add_subcommand("acquire", "Take images with the device");
  live->add_option("--enable", options->enable, "Chunks to switch on first, entries of ChunkSelector")->delimiter(',');
  live->add_option("--frames", options->frames, "Number of images")
      ->check(CLI::Range(1, 1000000))
      ->capture_default_str();
  live->callback([&chosen, options] { chosen = [options](Session& session) { acquire(session, *options); }; });
  CLI::App* given = chunks->add_subcommand("attach", "Attach chunks of a buffer in a file");
  given->add_option("buffer", options->buffer, "File with the buffer")
      ->required()
      ->type_name("FILE")
      ->check(CLI::ExistingFile);
  given->add_option("chunk", options->chunks, "Chunks: hexadecimal ID, offset and length in bytes")
      ->required()
      ->type_name("ID:OFFSET:LENGTH");
  given->callback([&chosen, options] { chosen = [options](Session& session) { attach(session, *options); }; });
}

}  // namespace tool
