#pragma once

/// Finds where a quoted string stops being plain ASCII that a reader can take
/// as it stands: at its quote, a backslash, a byte beyond ASCII, or a byte
/// below `lowest` (a control character JSON wants escaped, or NUL). Sixteen
/// bytes a step where the processor allows. Stateless.
class PlainTextScan
{
public:
    /// The first such byte at or after `p`, or `end`.
    static const char *find(const char *p, const char *end, char quote, char lowest);
};
