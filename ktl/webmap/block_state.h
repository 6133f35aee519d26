#pragma once

/// The state of a tile in a tile store. Other values below 100 are the application's own.
enum ENUM_BLOCK_STATE : int {
    /// No data.
    BLOCK_STATE_NONE = 1,
    /// The tile is in the data file.
    BLOCK_STATE_STORED = 2,
};
