// The faults of the bad drivers; each is a library of its own.
#pragma once

enum class Fault {
    None,
    WritesPastBuffer,
    WritesBeforeBuffer,
    LeavesOutNul,
    GivesHugeLength,
    GivesNoUtf8,
    HasOwnCodes,
    Crashes,
    Aborts,
    Hangs,
    HangsInOurGroup,
    Exits,
    AcceptsMadeUpHandles,
    AcceptsClosedHandles,
    IgnoresTimeout,
    KeepsLists,
    MiscountsDevices,
    OpensAnything,
    ReadsPastArgument,
};
