/// @file
/// The picture that the camera sees: a test card that shows the camera's state.
#ifndef CAMERA_SIM_PICTURE_TESTCARD_H
#define CAMERA_SIM_PICTURE_TESTCARD_H

#include <optional>
#include <string>
#include <vector>

#include "camera_sim/picture/Jpeg.h"
#include "camera_sim/state/CameraState.h"

namespace camera_sim {

/// A text on the picture. Characters outside ASCII are shown as question marks.
struct CardText {
    std::string text;
    /// Where the text's middle is: -1 is left and bottom, 1 right and top. Texts are moved into the
    /// picture as far as they fit.
    double x = 0;
    double y = 0;
};

/// Which parts of the picture are watched for motion.
struct MotionCells {
    int columns = 0;
    int rows = 0;
    std::vector<bool> active;  ///< row by row from the top left; what is missing is not active
};

/// What a test card shows.
struct TestCard {
    Resolution size{};       ///< both sides from 1 to kLargestCardSide
    double brightness = 50;  ///< 0..100
    std::string cameraName{};
    std::string clock{};
    std::vector<CardText> texts{};
    std::optional<PtzPosition> position{};  ///< of a camera that can move: -1..1, zoom 0..1
    std::optional<MotionCells> motion{};
};

inline constexpr int kLargestCardSide = 640;

/// @p resolution made smaller in proportion until it fits on a card.
Resolution CardSize(Resolution resolution);

Picture Draw(const TestCard& card);

}  // namespace camera_sim

#endif
