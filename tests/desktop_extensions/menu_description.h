#pragma once
#include <string>

namespace ostra::test {

/// A description of a menu with two actions, as the program's build makes it. `folder` holds the bundles.
inline std::string menuDescription(const std::string& program, const std::string& folder) {
  return "[Menu]\nName=Convert Picture\nName[de]=Bild umwandeln\nIcon=org.ostra.Ostra\n"
         "MimeTypes=image/png;image/jpeg;image/bmp;\nProgram=" +
         program + "\nEntries=grayscale;invert;\n[Entry grayscale]\nName=Convert to Grayscale\n" +
         "Name[de]=In Graustufen umwandeln\nTooltip=Rewrites the pictures\nTooltip[de]=Schreibt die Bilder "
         "neu\n" +
         "Icon=color-mode\nBundle=" + folder + "/grayscale\n[Entry invert]\nName=Invert\nBundle=" + folder +
         "/invert\n";
}

}  // namespace ostra::test
