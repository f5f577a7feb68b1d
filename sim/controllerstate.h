#pragma once

#include <QtGlobal>
#include <array>

namespace sim {

// What a favourite slot keeps: the video-wall part of the settings.
struct WallSettings {
    int rows = 2;
    int cols = 2;
    int channel = 1;                         // output last placed by "SMNC", 1..4
    std::array<int, 4> position{1, 2, 3, 4}; // tile shown by outputs 1..4
    bool bypass = false;                     // output 4 leaves the wall
    bool bezelOn = false;
    std::array<int, 4> bezelH{10, 10, 10, 10};
    std::array<int, 4> bezelV{10, 10, 10, 10};

    bool operator==(const WallSettings&) const = default;
};

enum PictureParam { Brightness = 0, Contrast = 1, Saturation = 2, Hue = 3 };
enum TrimGroup { HStart = 0, HEnd = 1, VStart = 2, VEnd = 3 };

// Everything one controller remembers. Values are kept in the ranges the tool
// can show; the command handler refuses anything outside them.
struct ControllerState {
    static constexpr int BezelDefault = 10;
    static constexpr int PictureDefault = 50;
    static constexpr int FavouriteSlots = 5;

    int number = 1; // 1-based position in the simulator, shown in the log
    bool power = true;
    int model = 0;      // 0..255
    int firmware = 102; // "VERS102" is v1.02

    // I/O setup; the defaults are those the tool shows after its OSD reset.
    int resolution = 6; // 0..16, 6 = 1080p60
    int osdAutoDisplay = 0;
    int osdTimeout = 2; // seconds, 2..50
    int osdH = 5;       // 0..20
    int osdV = 5;       // 0..20
    int osdGain = 2;    // 0..10
    bool mute = false;

    std::array<std::array<int, 4>, 4> picture{}; // [PictureParam][output - 1], 0..100
    WallSettings wall;
    std::array<std::array<int, 4>, 4> trim{}; // [TrimGroup][output - 1], -255..255
    std::array<WallSettings, FavouriteSlots> favourites;

    // Network configuration as stored; a restart ("SREL") applies it.
    bool staticMode = true;
    quint32 address = 0;
    quint32 mask = 0xFF000000u;
    quint32 gateway = 0x7F000001u;
    quint32 factoryAddress = 0; // where "SDEF" brings the controller back to

    // Factory settings of controller `number` whose factory address is `address`.
    // Model and firmware differ between controllers so that each can be told apart.
    static ControllerState factory(int number, quint32 address);

    bool operator==(const ControllerState&) const = default;
};

} // namespace sim
