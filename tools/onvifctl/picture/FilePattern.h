/// @file
/// Names of files for pictures of many cameras and times.
#ifndef ONVIFCTL_PICTURE_FILEPATTERN_H
#define ONVIFCTL_PICTURE_FILEPATTERN_H

#include <string>
#include <vector>

namespace onvifctl {

/// A camera's name as one of a file: anything but letters, digits, '-', '_', a '.' that is not the
/// first, and what is beyond ASCII becomes '_'.
std::string SafeFileName(const std::string& camera);

/// Throws CFailure when two of the cameras would have the same files.
void CheckFileNames(const std::vector<std::string>& cameras);

/// "%h-%t.jpg": %h is the camera's safe name, %t the local time as 20261122-140509, %i the
/// profile's index, %% a percent sign.
class CFilePattern {
 public:
    /// Throws CFailure when a '%' is followed by anything else.
    explicit CFilePattern(std::string pattern);

    bool Has(char letter) const { return letters_.find(letter) != std::string::npos; }
    bool IsPlain() const { return letters_.empty(); }

    /// For a picture that has been taken now.
    std::string Name(const std::string& camera, unsigned int index) const;

 private:
    const std::string pattern_;
    std::string letters_;
};

}  // namespace onvifctl

#endif
