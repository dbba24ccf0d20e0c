// The texts the program prints: status lines, statistics, summary, progress,
// log lines, hex.
#include <gtest/gtest.h>

#include "frame_record.h"
#include "log_sink.h"
#include "progress_bar.h"
#include "property_client.h"
#include "run_summary.h"
#include "status_text.h"

namespace zelto_cli {
namespace {

TEST(StatusText, ErrorLineNamesActionCauseAndBlock) {
  weftcore::Status status(weftcore::kLevelError, weftcore::kCauseInvalidArgument,
                          "mesh reduction level must be equal or greater than zero.");
  status.SetBlock("ZeltoMesh");
  EXPECT_EQ(ErrorLine("set kZeltoMeshAlgorithmConfigKey", status),
            "error: set kZeltoMeshAlgorithmConfigKey: mesh reduction level must be equal or "
            "greater than zero. (cause 2, block ZeltoMesh)");
}

FrameRecord Record(int64_t index, double ms) {
  FrameRecord record;
  record.index = index;
  record.sequenceNumber = static_cast<uint64_t>(index) + 1;
  record.capturedTimestamp = 33333333u * static_cast<uint64_t>(index);
  record.vertexCount = 307200;
  record.triangleCount = 612162;
  record.resetTriangle = index % 4 == 3;
  record.layout = MeshLayout::kReference;
  record.bytes = 28;
  record.buildMs = ms;
  return record;
}

TEST(StatsLine, OneJsonObjectWithEveryField) {
  EXPECT_EQ(StatsLine(Record(3, 4.12345)),
            R"({"frame":3,"sequenceNumber":4,"capturedTimestamp":99999999,"vertexCount":307200,)"
            R"("triangleCount":612162,"resetTriangle":true,"layout":"reference","bytes":28,)"
            R"("buildMs":4.123})");
}

TEST(RunSummary, MedianOfOddAndEvenCounts) {
  EXPECT_EQ(MedianBuildMs({Record(0, 5), Record(1, 1), Record(2, 3)}), 3);
  EXPECT_EQ(MedianBuildMs({Record(0, 5), Record(1, 1), Record(2, 3), Record(3, 10)}), 4);
  EXPECT_EQ(MedianBuildMs({}), 0);
}

TEST(RunSummary, Text) {
  SummaryInput input;
  input.source = "the synthetic scene";
  input.frames = {Record(0, 2.0), Record(1, 3.0), Record(2, 9.0)};
  input.frames[2].vertexCount = 1200;
  input.output = FrameOutput{"out", OutputFormat::kPly, false};
  input.preview = "out/preview.png";
  input.stats = "out/stats.jsonl";
  EXPECT_EQ(SummaryText(input),
            "3 frames from the synthetic scene, reference layout\n"
            "  vertices per frame   1200..307200\n"
            "  triangles per frame  612162\n"
            "  median time          3.0 ms per frame\n"
            "  meshes               out/frame_000000.ply ... out/frame_000002.ply\n"
            "  preview              out/preview.png\n"
            "  statistics           out/stats.jsonl\n");
}

TEST(RunSummary, OneRawFrameInBothLayoutsNeverHappensButReadsWell) {
  SummaryInput input;
  input.source = "examples/redwood";
  input.frames = {Record(0, 1.25)};
  input.frames.push_back(Record(1, 1.25));
  input.frames[1].layout = MeshLayout::kFlat;
  input.output = FrameOutput{"o", OutputFormat::kRaw, false};
  EXPECT_EQ(SummaryText(input),
            "2 frames from examples/redwood, flat and reference layout\n"
            "  vertices per frame   307200\n"
            "  triangles per frame  612162\n"
            "  median time          1.2 ms per frame\n"
            "  meshes               o/frame_000000.bin ... o/frame_000001.bin\n");
}

TEST(RunSummary, NoFilesWithFormatNone) {
  SummaryInput input;
  input.source = "the synthetic scene";
  input.frames = {Record(0, 1.0)};
  input.output = FrameOutput{"out", OutputFormat::kNone, false};
  EXPECT_EQ(SummaryText(input),
            "1 frame from the synthetic scene, reference layout\n"
            "  vertices per frame   307200\n"
            "  triangles per frame  612162\n"
            "  median time          1.0 ms per frame\n");
}

TEST(ProgressText, BarCountAndTime) {
  EXPECT_EQ(ProgressText(0, 60, 0), "[------------------------------]  0/60 frames  0.0 ms");
  EXPECT_EQ(ProgressText(30, 60, 4.26), "[###############---------------]  30/60 frames  4.3 ms");
  EXPECT_EQ(ProgressText(60, 60, 1), "[##############################]  60/60 frames  1.0 ms");
}

std::string Written(std::FILE* file) {
  std::string text(static_cast<size_t>(std::ftell(file)), '\0');
  std::rewind(file);
  EXPECT_EQ(std::fread(text.data(), 1, text.size(), file), text.size());
  return text;
}

TEST(ProgressBar, DrawsNothingWhenDisabled) {
  std::FILE* file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  {
    ProgressBar bar(false, 10, file);
    bar.Update(5, 1.0);
    bar.Clear();
  }
  EXPECT_EQ(Written(file), "");
  std::fclose(file);
}

TEST(ProgressBar, RedrawsOneLineAndErasesIt) {
  std::FILE* file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  {
    ProgressBar bar(true, 2, file);
    bar.Clear();  // nothing drawn yet: nothing to erase
    bar.Update(1, 1.0);
    bar.Update(2, 2.0);
  }
  EXPECT_EQ(Written(file),
            "\r[###############---------------]  1/2 frames  1.0 ms"
            "\r[##############################]  2/2 frames  2.0 ms"
            "\r\x1b[2K");
  std::fclose(file);
}

TEST(FrameFileName, SixDigitsAndTheFormatsExtension) {
  EXPECT_EQ(FrameFileName(OutputFormat::kPly, 0), "frame_000000.ply");
  EXPECT_EQ(FrameFileName(OutputFormat::kObj, 42), "frame_000042.obj");
  EXPECT_EQ(FrameFileName(OutputFormat::kRaw, 123456), "frame_123456.bin");
  EXPECT_EQ(FrameFileName(OutputFormat::kNone, 1), "");
}

TEST(LogLine, KeepsTheComponentsOwnTagAndDropsTheNewline) {
  EXPECT_EQ(LogLine("ZeltoMesh", "[ZeltoMesh] Using playback: 1\n"),
            "[ZeltoMesh] Using playback: 1");
  EXPECT_EQ(LogLine("ZeltoMesh", "plain\r\n"), "[ZeltoMesh] plain");
}

TEST(HexText, LowercasePairs) {
  EXPECT_EQ(HexText({0x82, 0xa3, 0x00, 0xff}), "82a300ff");
  EXPECT_EQ(HexText({}), "");
}

}  // namespace
}  // namespace zelto_cli
