// The note as it is set: readable from a music stand, and in its place whatever stands beside it.
#include <gtest/gtest.h>

#include "tests/cli/TestFiles.h"
#include "tests/desktop/OrvaneRig.h"

namespace orvane::test {
namespace {

class OrvaneLookTest : public DesktopTest {
 protected:
  // Four seconds of each note, again and again.
  static std::vector<float> notes() {
    std::vector<float> samples = sine(392.0, 48000, 4.0);  // G4
    const std::vector<float> sharp = sine(415.3, 48000, 4.0);
    samples.insert(samples.end(), sharp.begin(), sharp.end());
    return samples;
  }

  // The pixels on which a text is to be seen, dark on light, in a picture taken while the note was
  // shown before and after.
  QRect ink(const OrvaneProgram &program, const std::string &note, const std::string &text) const {
    QRect found;
    EXPECT_TRUE(eventually(
        [&] {
          if (program.note() != note)
            return false;
          const QRect place = program.place(text);
          const QImage image = screen.image(place);
          found = {};
          for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
              if (qGray(image.pixel(x, y)) < 100)
                found |= QRect(place.topLeft() + QPoint(x, y), QSize(1, 1));
          return program.note() == note;
        },
        kPatience * 3))
        << note;
    return found;
  }

  TestFolder folder;
};

TEST_F(OrvaneLookTest, TheLetterIsLargeAndStaysWhereItIsWhenAnAccidentalStandsBesideIt) {
  const OrvaneProgram program(desktop, tree,
                              {"--input", folder.writeSound("G.wav", notes(), 48000)});
  ASSERT_TRUE(program.opens()) << program.standardError();

  const QRect letter = ink(program, "G4", "mNoteText");
  EXPECT_GE(letter.height(), 72);
  EXPECT_TRUE(ink(program, "G4", "mAccidentalText").isEmpty());
  const QRect octave = ink(program, "G4", "mOctaveText");

  EXPECT_EQ(ink(program, "G♯4", "mNoteText"), letter);
  EXPECT_EQ(ink(program, "G♯4", "mOctaveText"), octave);
  const QRect accidental = ink(program, "G♯4", "mAccidentalText");
  // Raised beside the letter, and a subscript.
  EXPECT_LT(letter.right(), accidental.left());
  EXPECT_LT(accidental.bottom(), letter.center().y());
  EXPECT_LT(letter.right(), octave.left());
  EXPECT_GT(octave.bottom(), letter.bottom());
  EXPECT_LT(2 * octave.height(), letter.height());
  EXPECT_FALSE(accidental.isEmpty());
}

}  // namespace
}  // namespace orvane::test
