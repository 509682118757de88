#pragma once

namespace quillorbit::bench {

// The sections of the table. Each prints itself.

/// The datagram handler on the fake platform: time and heap allocations for one datagram.
void Handler();
/// One frame of the 3D view, beside showing a finished picture.
void Frame();
/// From sending to the report at the user-space driver, beside a bare loop.
void Latency();
/// The 3D view at several rates of datagrams.
void View();
/// Start to the window on the screen, and memory, beside an empty program of the same toolkit.
void Window();
/// Wake-ups and processor time of the hidden program, beside an empty one and a bare loop.
void Idle();

}  // namespace quillorbit::bench
