#include "chartcore/packets/packet.h"

#include <gtest/gtest.h>

TEST(PacketConstruction, Placeholder) { CPacket p; EXPECT_EQ(p.GetPacketSize(), 0); }
