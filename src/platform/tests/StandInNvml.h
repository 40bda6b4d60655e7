#pragma once

#include <atomic>

// A management library that does as the test says and counts what is asked of it. It is a shared
// library of its own; the test reaches this through the function "standIn".
struct StandInNvml {
    std::atomic<int> sessions = 0;  // init less shutdown
    std::atomic<int> queries = 0;   // calls that reach a card
    std::atomic<bool> hang = false;
    std::atomic<int> inside = 0;  // calls that hang now

    int initResult = 0;
    int queryResult = 0;
    unsigned utilization = 0;  // percent
    unsigned long long used = 0;
    unsigned long long total = 0;

    struct Sample {
        unsigned pid;
        unsigned long long at;  // microseconds
        unsigned percent;
    };
    Sample samples[200] = {};
    unsigned sampleCount = 0;
    unsigned running[4] = {};
    unsigned runningCount = 0;
};

extern "C" StandInNvml* standIn();
