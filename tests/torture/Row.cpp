#include "Row.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <thread>
#include <utility>
#include <vector>

namespace Torture {

Row::Row(std::string name, const Limits& limits)
    : name_(std::move(name)), limits_(limits), end_(std::chrono::steady_clock::now() + limits.time) {}

std::mt19937_64 Row::chance(int round) const {
    std::seed_seq seed{limits_.seed, static_cast<std::uint64_t>(round),
                       static_cast<std::uint64_t>(std::hash<std::string>()(name_))};
    return std::mt19937_64(seed);
}

bool Row::takeRound(int& round, int units) {
    const std::lock_guard lock(mutex_);
    if (taken_ * units >= limits_.rounds || std::chrono::steady_clock::now() >= end_) {
        return false;
    }
    round = taken_++;
    return true;
}

void Row::doRounds(const std::function<void(int round)>& work, int units) {
    for (int round = 0; takeRound(round, units);) {
        try {
            work(round);
        } catch (const std::exception& problem) {
            lost(round, problem.what());
        }
        const std::lock_guard lock(mutex_);
        done_ += units;
    }
}

void Row::run(const std::function<void(int round)>& work, int units) {
    std::vector<std::thread> lanes;
    for (int lane = 0; lane < limits_.lanes; ++lane) {
        lanes.emplace_back([this, &work, units] { doRounds(work, units); });
    }
    for (std::thread& lane : lanes) {
        lane.join();
    }
}

void Row::count(const std::string& figure, long amount) {
    const std::lock_guard lock(mutex_);
    figures_[figure] += amount;
}

void Row::highest(const std::string& figure, long value) {
    const std::lock_guard lock(mutex_);
    figures_[figure] = std::max(figures_[figure], value);
}

void Row::lost(int round, const std::string& what) {
    const std::lock_guard lock(mutex_);
    ++losses_;
    std::cerr << "LOST: " << name_ << ", round " << round << ", seed " << limits_.seed << ": " << what
              << std::endl;
}

bool Row::print() const {
    const std::lock_guard lock(mutex_);
    std::cout << name_ << '\t' << done_ << '\t' << limits_.rounds << '\t' << losses_ << '\t';
    const char* separator = "";
    for (const auto& [figure, amount] : figures_) {
        std::cout << separator << figure << ' ' << amount;
        separator = "; ";
    }
    std::cout << std::endl;
    return losses_ == 0 && done_ > 0;
}

}  // namespace Torture
