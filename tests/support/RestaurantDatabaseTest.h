#pragma once
// Base of the tests that read a restaurant database: each test gets a fresh database on the
// private server with the restaurant tables, named after the test.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/support/ScratchDatabase.h"

namespace kitra::test {

class RestaurantDatabaseTest : public ::testing::Test {
protected:
    void SetUp() override {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        database_ = std::make_unique<ScratchDatabase>(std::string(info->test_suite_name()) + "_" +
                                                      info->name());
        database_->LoadRestaurantSchema();
    }
    void TearDown() override { database_.reset(); }

    ScratchDatabase& Database() { return *database_; }
    const MariaDbServer& Server() { return database_->Server(); }
    std::string ConnectionString() const { return database_->ConnectionString(); }

private:
    std::unique_ptr<ScratchDatabase> database_;
};

}  // namespace kitra::test
