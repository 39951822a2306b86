// A test base that fails when a test leaves base-class objects behind (filters, pins' filters,
// allocators, samples, enumerators): every reference taken in the test must have been given back.
#pragma once

#include <gtest/gtest.h>

#include "dshow/baseclasses/unknown.h"

class LiveObjectTest : public ::testing::Test {
protected:
    void SetUp() override { m_before = CBaseObject::ObjectsActive(); }
    void TearDown() override { EXPECT_EQ(CBaseObject::ObjectsActive(), m_before) << "base-class objects were not freed"; }

private:
    LONG m_before = 0;
};
