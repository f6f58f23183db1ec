// The tag of the ID card page's log lines.
#pragma once

constexpr char kIdcPageTag[] = "二代证";
