// Frame memory through the host (Parts 1.4, 2.1): every block comes back to
// the allocator, and the reference layout's arrays outlive one more frame.
#include <map>
#include <vector>

#include <gtest/gtest.h>

#include "tests/component/mesh_source_test.h"

namespace zelto_test {
namespace {

class FrameMemoryTest : public MeshSourceTest {
 protected:
  // A mesh frame as a client takes it from the "mesh" stream.
  weftcore::Frame* TakeFrame() {
    weftcore::Frame* frame = nullptr;
    const weftcore::Status status = mesh->GetFrame(&frame, 0);
    EXPECT_TRUE(status.ok()) << status.message();
    EXPECT_NE(nullptr, frame);
    return frame;
  }
  static ZeltoMesh::MeshFrameData Record(weftcore::Frame* frame) {
    std::map<uint32_t, weftcore::Channel*> channels;
    EXPECT_TRUE(frame->GetChannelList(&channels).ok());
    weftcore::Channel::RawData raw;
    EXPECT_TRUE(channels.at(0)->GetRawData(&raw).ok());
    EXPECT_EQ(28u, raw.size);
    return ReadMeshRecord(raw.address);
  }
};

TEST_F(FrameMemoryTest, AfterStopAndCloseEveryFramesMemoryIsBackInTheAllocator) {
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 1));
  ASSERT_NO_FATAL_FAILURE(OpenMesh());
  ASSERT_TRUE(mesh->Start().ok());
  weftcore::Frame* first = TakeFrame();
  weftcore::Frame* second = TakeFrame();
  weftcore::Frame* third = TakeFrame();
  // One block per outstanding mesh frame; the upstream frames are back.
  EXPECT_EQ(3, allocator().LiveCount());
  EXPECT_EQ(3, upstream.Camera().counts.framesReleased);

  ASSERT_TRUE(mesh->ReleaseFrame(first).ok());
  EXPECT_EQ(2, allocator().LiveCount());
  ASSERT_TRUE(mesh->Stop().ok());
  ASSERT_TRUE(mesh->ReleaseFrame(second).ok());
  ASSERT_TRUE(mesh->ReleaseFrame(third).ok());
  EXPECT_EQ(0, allocator().LiveCount());
  EXPECT_TRUE(CloseMesh().ok());
  EXPECT_EQ(0, allocator().LiveCount());
  EXPECT_EQ(6, allocator().TotalAllocations());  // three point clouds, three meshes
}

TEST_F(FrameMemoryTest, FramesStillHeldAtCloseComeBackWhenTheHostReleasesThem) {
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 1));
  ASSERT_NO_FATAL_FAILURE(OpenMesh());
  ASSERT_TRUE(mesh->Start().ok());
  TakeFrame();
  TakeFrame();
  ASSERT_EQ(2, allocator().LiveCount());
  ASSERT_TRUE(mesh->Stop().ok());
  EXPECT_TRUE(CloseMesh().ok());  // the host hands the frames back first
  EXPECT_EQ(0, allocator().LiveCount());
}

TEST_F(FrameMemoryTest, FlatLayoutFramesComeBackToo) {
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 1));
  ASSERT_NO_FATAL_FAILURE(OpenMesh());
  weftcore::FrameRateProperty rate;
  rate.num = 30;
  rate.denom = 1;
  ASSERT_TRUE(source().Set(weftcore::kFrameRatePropertyKey, &rate).ok());
  ASSERT_TRUE(mesh->Start().ok());
  weftcore::Frame* frame = TakeFrame();
  EXPECT_EQ(1, allocator().LiveCount());
  ASSERT_TRUE(mesh->ReleaseFrame(frame).ok());
  ASSERT_TRUE(mesh->Stop().ok());
  EXPECT_TRUE(CloseMesh().ok());
  EXPECT_EQ(0, allocator().LiveCount());
}

TEST_F(FrameMemoryTest, TheReferenceLayoutsAddressesStayReadableUntilTheCallAfterNext) {
  upstream.Camera().QueueFrame(FlatPointCloudFrame(1000, 1));
  upstream.Camera().QueueFrame(FlatPointCloudFrame(2000, 2));
  upstream.Camera().QueueFrame(FlatPointCloudFrame(3000, 3));
  ASSERT_NO_FATAL_FAILURE(OpenMesh());
  ASSERT_TRUE(mesh->Start().ok());

  weftcore::Frame* a = TakeFrame();
  const ZeltoMesh::MeshFrameData recordA = Record(a);
  ASSERT_TRUE(mesh->ReleaseFrame(a).ok());  // the record's arrays are the source's
  weftcore::Frame* b = TakeFrame();
  const ZeltoMesh::MeshFrameData recordB = Record(b);
  ASSERT_TRUE(mesh->ReleaseFrame(b).ok());

  ASSERT_EQ(12, recordA.vertexCount);
  ASSERT_EQ(12, recordB.vertexCount);
  EXPECT_NE(VerticesOf(recordA), VerticesOf(recordB));
  // After the next call, A's vertices still hold A's depth (1 m) ...
  for (int vertex = 0; vertex < recordA.vertexCount; ++vertex) {
    EXPECT_EQ(1.0f, VerticesOf(recordA)[3 * vertex + 2]);
    EXPECT_EQ(2.0f, VerticesOf(recordB)[3 * vertex + 2]);
  }
  EXPECT_EQ(0, TrianglesOf(recordA)[0]);

  // ... and the call after next rewrites them in place.
  weftcore::Frame* c = TakeFrame();
  const ZeltoMesh::MeshFrameData recordC = Record(c);
  ASSERT_TRUE(mesh->ReleaseFrame(c).ok());
  EXPECT_EQ(VerticesOf(recordA), VerticesOf(recordC));
  EXPECT_EQ(3.0f, VerticesOf(recordA)[2]);
  EXPECT_EQ(2.0f, VerticesOf(recordB)[2]);

  ASSERT_TRUE(mesh->Stop().ok());
  EXPECT_TRUE(CloseMesh().ok());
  EXPECT_EQ(0, allocator().LiveCount());
}

}  // namespace
}  // namespace zelto_test
