// Device files as streams, and how each failure shows.
#include <sstream>

#include "FileCamera.h"
#include "PassingTime.h"

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

std::string pattern(size_t size) {
  std::string text(size, '\0');
  for (size_t i = 0; i < size; ++i) text[i] = static_cast<char>('a' + i % 23);
  return text;
}

// At most so many bytes of the device file, as one read.
std::string download(IDevFileStream& in, size_t size) {
  std::string got(size, '\0');
  got.resize(static_cast<size_t>(in.rdbuf()->sgetn(got.data(), static_cast<std::streamsize>(size))));
  return got;
}

// What the device holds after `write` has used a stream to it.
std::string upload(FileBench<>& bench, const std::function<void(ODevFileStream&)>& write) {
  ODevFileStream out(bench.map, "Firmware");
  write(out);
  out.close();
  return bench.camera.files[1];
}
std::string upload(FileBench<>& bench, const std::string& content) {
  return upload(bench,
                [&](ODevFileStream& out) { out.write(content.data(), static_cast<std::streamsize>(content.size())); });
}

TEST(DeviceFile, MovesAnySizeThroughTheBuffer) {
  for (const size_t size : {0u, 1u, 11u, 12u, 13u, 24u, 100u, 1000u}) {
    FileBench<> bench;
    const std::string content = pattern(size);
    EXPECT_EQ(upload(bench, content), content) << size;
    EXPECT_EQ(bench.camera.opened, 0) << size;
    const auto blocks = static_cast<int>((size + 11) / 12);
    EXPECT_EQ(bench.camera.executions, 2 + blocks) << "an empty file is opened and closed, not written";

    for (const bool hasSize : {true, false}) {
      for (const bool failsAtEnd : {true, false}) {
        FileBench<> reading(fileDescription("", hasSize ? "" : "FileSize"));
        reading.camera.files[0] = content;
        reading.camera.failsAtEnd = failsAtEnd;
        IDevFileStream in(reading.map, "UserSet");
        EXPECT_EQ(download(in, 2000), content) << size;
        EXPECT_EQ(download(in, 1), "");
        in.close();
        EXPECT_FALSE(in.fail());
        EXPECT_EQ(reading.camera.opened, 0);
      }
    }
  }
}

TEST(DeviceFile, CopiesAnotherStreamAndMixesSmallPieces) {
  FileBench<> bench;
  std::istringstream source(pattern(50)), empty("");
  EXPECT_EQ(upload(bench, [&](ODevFileStream& out) { EXPECT_TRUE((out << source.rdbuf()).good()); }), pattern(50));
  EXPECT_EQ(upload(bench,
                   [](ODevFileStream& out) {
                     out << "12" << 3;
                     out << ' ' << std::hex;
                     out << "text" << std::flush;
                     out.put('!');
                     out.flush();
                     out << std::string(20, '-');
                   }),
            "123 text!" + std::string(20, '-'));
  EXPECT_EQ(upload(bench,
                   [&](ODevFileStream& out) {
                     out << empty.rdbuf();
                     EXPECT_TRUE(out.fail() && !out.bad()) << "nothing copied is a fail bit, not an exception";
                   }),
            "");
  bench.camera.files[0] = "12 34";
  IDevFileStream in(bench.map, "UserSet");
  int a = 0, b = 0;
  in >> a >> b;
  EXPECT_EQ(a + b, 46);
  EXPECT_TRUE(in.eof());
}

TEST(DeviceFile, ABlockCostsSevenPortAccesses) {
  FileBench<> bench;
  bench.camera.failsAtEnd = false;
  const auto accesses = [&](size_t blocks) {
    const int before = bench.camera.accesses;
    upload(bench, pattern(12 * blocks));
    return bench.camera.accesses - before;
  };
  accesses(2);
  const int one = accesses(1);
  EXPECT_EQ(accesses(11) - one, 10 * 7);

  IDevFileStream in(bench.map, "Firmware");
  download(in, 12);
  const int before = bench.camera.accesses;
  for (int i = 0; i < 5; ++i) download(in, 12);
  EXPECT_EQ(bench.camera.accesses - before, 5 * 7);
}

TEST(DeviceFile, TwoStreamsTakeTurns) {
  FileBench<> bench;
  FileProtocolAdapter first, second;
  ASSERT_TRUE(first.attach(bench.map));
  ASSERT_TRUE(second.attach(bench.map));
  bench.camera.files[0] = "first file here";
  bench.camera.files[1] = "the second file";
  char a[6] = {}, b[6] = {};
  EXPECT_EQ(first.read(a, 0, 5, "UserSet"), 5);
  EXPECT_EQ(second.read(b, 0, 5, "Firmware"), 5);
  EXPECT_EQ(first.read(a, 6, 4, "UserSet"), 4);
  EXPECT_STREQ(a, "filet");
  EXPECT_STREQ(b, "the s");
  EXPECT_TRUE(first.deleteFile("Firmware"));
  EXPECT_EQ(bench.camera.files[1], "");
}

TEST(DeviceFile, BlocksFitBufferLimitAndIncrement) {
  const struct {
    const char* extra;
    int64_t block;
  } cases[] = {{"", 12},
               {"<Max>10</Max>", 10},
               {"<Max>10</Max><Inc>4</Inc>", 8},
               {"<Min>2</Min><Max>100</Max><Inc>4</Inc>", 10},
               {"<Max>0</Max>", 1}};
  for (const auto& c : cases) {
    FileBench<> bench(fileDescription(c.extra));
    FileProtocolAdapter adapter;
    ASSERT_TRUE(adapter.attach(bench.map));
    EXPECT_EQ(adapter.getBufSize("Firmware", std::ios_base::out), c.block) << c.extra;
  }
  // A reader of such a device asks for whole steps and takes what there is.
  FileBench<> reading(fileDescription("<Max>12</Max><Inc>4</Inc>", "FileSize"));
  reading.camera.files[0] = pattern(31);
  IDevFileStream in(reading.map, "UserSet");
  EXPECT_EQ(download(in, 40), pattern(31));
  EXPECT_THAT(reading.camera.lengths, Each(testing::Truly([](uint32_t length) { return length % 4 == 0; })));
  // The last short block is rounded up only where the increment forbids its length.
  FileBench<> stepped(fileDescription("<Max>12</Max><Inc>4</Inc>"));
  EXPECT_EQ(upload(stepped, pattern(14)), pattern(14) + std::string(2, '\0'));
  EXPECT_THAT(stepped.camera.lengths, ElementsAre(12, 4));
  // What is shorter than the least length is filled with zeros, not with what the last block left.
  FileBench<> least(fileDescription("<Min>8</Min><Max>12</Max><Inc>4</Inc>"));
  FileProtocolAdapter adapter;
  ASSERT_TRUE(adapter.attach(least.map));
  EXPECT_EQ(adapter.write("abc", 0, 3, "Firmware"), 3);
  EXPECT_EQ(adapter.write("z", 8, 1, "Firmware"), 1);
  EXPECT_EQ(least.camera.files[1], "abc" + std::string(5, '\0') + "z" + std::string(7, '\0'));
  EXPECT_THAT(least.camera.lengths, ElementsAre(8, 8));
  // A limit that falls while a file is open makes the blocks smaller.
  FileBench<> falling(fileDescription("<pMax>Mode</pMax><Inc>4</Inc>"));
  falling.t.integer("Mode")->SetValue(12);
  EXPECT_EQ(upload(falling,
                   [&](ODevFileStream& out) {
                     out.write(pattern(12).data(), 12);
                     falling.t.integer("Mode")->SetValue(8);
                     out.write(pattern(12).data(), 12);
                   }),
            pattern(12) + pattern(12));
  EXPECT_THAT(falling.camera.lengths, ElementsAre(12, 8, 4));
  FileBench<> plain;
  EXPECT_EQ(upload(plain, pattern(14)), pattern(14));
  EXPECT_THAT(plain.camera.lengths, ElementsAre(12, 2));
}

TEST(DeviceFile, OffsetsReachAsFarAsTheirFeature) {
  FileBench<> bench(fileDescription("", "", "<Max>12</Max>"));
  EXPECT_EQ(upload(bench, pattern(24)), pattern(24)) << "the last block begins at the maximum";
  ODevFileStream out(bench.map, "Firmware");
  EXPECT_EQ(refusal<RuntimeException>([&] { out.write(pattern(36).data(), 36); }),
            "writing file 'Firmware' stopped at byte 24: the offset is beyond the maximum of FileAccessOffset");
  FileBench<> late(fileDescription("", "", "<Min>4</Min>"));
  IDevFileStream in(late.map, "UserSet");
  EXPECT_THAT(refusal<OutOfRangeException>([&] { download(in, 1); }), HasSubstr("must be at least Min = 4"));
}

TEST(DeviceFile, RefusedOrUnfitDevicesFailWhereTheFileIsOpened) {
  for (const char* missing :
       {"FileSelector", "FileOperationSelector", "FileOpenMode", "FileOperationStatus", "FileOperationExecute",
        "FileAccessOffset", "FileAccessLength", "FileOperationResult", "FileAccessBuffer"}) {
    FileBench<> bench(fileDescription("", missing));
    EXPECT_EQ(refusal<RuntimeException>([&] { ODevFileStream out(bench.map, "Firmware"); }),
              std::string("file 'Firmware' could not be opened for writing: the device has no ") + missing);
    EXPECT_TRUE(IDevFileStream(bench.map, "Firmware").fail());
  }
  FileBench<> bench;
  bench.camera.refusesOpen = true;
  EXPECT_EQ(refusal<RuntimeException>([&] { ODevFileStream out(bench.map, "Firmware"); }),
            "file 'Firmware' could not be opened for writing: status Failure");
  IDevFileStream in(bench.map, "Firmware");
  EXPECT_TRUE(in.fail());
  EXPECT_FALSE(in.is_open());
  bench.camera.refusesOpen = false;
  EXPECT_THROW(IDevFileStream(bench.map, "NoSuchFile"), InvalidArgumentException);
  EXPECT_THROW(ODevFileStream(bench.map, "NoSuchFile"), InvalidArgumentException);
  EXPECT_TRUE(IDevFileStream(nullptr, "Firmware").fail());
  FileProtocolAdapter adapter;
  ASSERT_TRUE(adapter.attach(bench.map));
  EXPECT_FALSE(adapter.openFile("UserSet", std::ios_base::in | std::ios_base::out)) << "there is no entry ReadWrite";
  EXPECT_THROW(FileProtocolAdapter().openFile("UserSet", std::ios_base::in), LogicalErrorException);
}

TEST(DeviceFile, AnUploadThatIsCutShortIsNeverASuccess) {
  FileBench<> bench;
  bench.camera.capacity = 30;
  {
    ODevFileStream out(bench.map, "Firmware");
    const std::string content = pattern(100);
    EXPECT_EQ(refusal<RuntimeException>([&] { out.write(content.data(), 100); }),
              "writing file 'Firmware' stopped at byte 24: status Failure");
    EXPECT_TRUE(out.bad());
    out.close();
  }
  EXPECT_EQ(bench.camera.opened, 0);
  {
    std::istringstream source(pattern(100));
    ODevFileStream out(bench.map, "Firmware");
    EXPECT_THAT(refusal<RuntimeException>([&] { out << source.rdbuf(); }), HasSubstr("stopped at byte 24"));
    EXPECT_TRUE(out.bad());
  }
  {
    ODevFileStream out(bench.map, "Firmware");
    out << std::string(24, 'x') << "1234567";
    EXPECT_THAT(refusal<RuntimeException>([&] { out.close(); }), HasSubstr("stopped at byte 24"));
    EXPECT_FALSE(out.is_open());
  }
  bench.camera.refusesClose = true;
  {
    ODevFileStream out(bench.map, "Firmware");
    out << "abc";
    EXPECT_EQ(refusal<RuntimeException>([&] { out.close(); }), "file 'Firmware' could not be closed: status Failure");
  }
  { ODevFileStream silent(bench.map, "Firmware"); }
  IDevFileStream in(bench.map, "UserSet");
  in.close();
  EXPECT_TRUE(in.fail());
  bench.camera.refusesClose = false;
  for (const uint32_t claimed : {0U, 13U, 0xffffffffU}) {  // nothing, more than was sent, less than nothing
    bench.camera.claimed = claimed;
    ODevFileStream out(bench.map, "UserSet");
    EXPECT_THAT(refusal<RuntimeException>([&] { out.write(pattern(12).data(), 12); }), HasSubstr("stopped at byte 0"));
    EXPECT_THAT(refusal<RuntimeException>([&] { out.rdbuf()->sputn(pattern(12).data(), 12); }),
                HasSubstr("an earlier write has failed"));
    EXPECT_EQ(out.rdbuf()->sputn("abc", 3), 3) << "waits for more";
    EXPECT_NO_THROW(out.close()) << "the failure was told";
  }
  bench.camera.claimed.reset();
  bench.camera.shortCount = 5;
  EXPECT_EQ(upload(bench, pattern(30)), pattern(30)) << "a short count only needs another block";
}

TEST(DeviceFile, AFailureBelowTheFileSizeIsNoEndOfFile) {
  // The device stops in the middle, with a status other than success or without bytes.
  struct Broken : FileCamera {
    bool isSilent = false;
    void written(int64_t address) override {
      FileCamera::written(address);
      if (address == Execute && word(Operation) == FileCamera::Read && word(Offset) >= 12)
        setWord(isSilent ? Result : Status, isSilent ? 0 : 1);
    }
  };
  for (const bool hasSize : {true, false})
    for (const bool isSilent : {true, false}) {
      FileBench<Broken> bench(fileDescription("", hasSize ? "" : "FileSize"));
      bench.camera.isSilent = isSilent;
      bench.camera.files[0] = pattern(40);
      IDevFileStream in(bench.map, "UserSet");
      if (hasSize) {
        std::string got(100, '\0');
        EXPECT_EQ(refusal<RuntimeException>([&] { in.read(got.data(), 100); }),
                  std::string("reading file 'UserSet' stopped at byte 12 of 40: status ") +
                      (isSilent ? "Success" : "Failure"));
      } else {
        EXPECT_EQ(download(in, 100), pattern(12));
      }
    }
}

TEST(DeviceFile, AFileThatShrinksEndsWhereItEndsNow) {
  struct Shrinking : FileCamera {
    void written(int64_t address) override {
      if (address == Execute && word(Operation) == FileCamera::Read && word(Offset) == 12) files[0].resize(20);
      FileCamera::written(address);
    }
  };
  FileBench<Shrinking> bench;
  bench.camera.files[0] = pattern(40);
  IDevFileStream in(bench.map, "UserSet");
  EXPECT_EQ(download(in, 100), pattern(20));
  bench.map->Connect(static_cast<IPort*>(nullptr));  // now it cannot be closed; the end of the stream says nothing
}

// A device that never finishes is given up after the limit, whatever it was asked to do, and then left alone.
TEST(DeviceFile, AnOperationWithoutEndIsGivenUp) {
  struct Hanging : FileCamera {
    uint32_t hangsAt = 0;
    void written(int64_t address) override {
      if (address == Execute && word(Operation) == hangsAt) return;  // stays busy
      FileCamera::written(address);
    }
  };
  const PassingTime time;
  for (const auto& [operation, name] :
       {std::pair{FileCamera::Open, "Open"}, {FileCamera::Write, "Write"}, {FileCamera::Close, "Close"}}) {
    FileBench<Hanging> bench;
    bench.camera.hangsAt = operation;
    const auto start = time.now();
    EXPECT_EQ(refusal<TimeoutException>([&] {
                ODevFileStream out(bench.map, "Firmware");
                out << "abc";
                out.close();
              }),
              std::string("file 'Firmware': operation '") + name + "' has not finished within 120000 ms");
    EXPECT_GT(time.now() - start, std::chrono::milliseconds(kFileOperationTimeout));
    EXPECT_LT(time.now() - start, std::chrono::milliseconds(kFileOperationTimeout + 200)) << "waits once";
  }
}

// Whatever access fails, the port's own text arrives and the file is closed in the end; so it is with uploads, of which
// FirmwareApplyTest makes each access fail.
TEST(DeviceFile, EveryPortFailureOfADownloadArrivesUnchanged) {
  FileBench<> bench;
  bench.camera.files[1] = pattern(30);
  int failures = 0;
  for (bool failed = true; failed; ++failures) {
    bench.map->InvalidateNodes();
    bench.camera.failAt = bench.camera.accesses + failures + 1;
    std::string text, got;
    try {
      IDevFileStream in(bench.map, "Firmware");
      got = download(in, 100);
      in.close();
    } catch (const TimeoutException& e) {
      text = e.what();
    }
    failed = bench.camera.accesses >= bench.camera.failAt;
    EXPECT_EQ(text, failed ? "the line is dead" : "") << failures;
    EXPECT_EQ(bench.camera.opened, 0) << failures;
    EXPECT_TRUE(failed || got == pattern(30));
  }
  EXPECT_GT(failures, 30);
}

}  // namespace
