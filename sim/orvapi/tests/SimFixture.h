// Shared helpers of the simulator's tests.
#ifndef ORV_SIM_TESTS_SIMFIXTURE_H
#define ORV_SIM_TESTS_SIMFIXTURE_H

#include "orvapi.h"
#include "orvsim.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

class SimTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        orvsim_reset();
    }
    void TearDown() override
    {
        orvsim_reset();
    }

    void load(const std::string& json)
    {
        ASSERT_EQ(0, orvsim_load_model_json(json.c_str())) << orvsim_last_error();
    }

    static std::string take(char* p)
    {
        std::string s = p ? p : "";
        std::free(p);
        return s;
    }
};

// Frees a result array however the test leaves.
template <class T>
struct Freed
{
    T* p = nullptr;
    ~Freed()
    {
        std::free(p);
    }
};

#endif
