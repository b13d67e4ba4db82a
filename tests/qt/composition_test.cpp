// Korean input through input-method events: the syllable being composed is
// drawn at the caret, and every way a composition ends commits it once.
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QTest>

#include "qt_test_util.h"

using qt_test::CountOther;

namespace {

// The input method's events for "한국어" and "좋아" as a user types the jamo,
// up to the last syllable's final preedit.
const char kHanguk[] = "ㅎ 하 한 한|ㄱ 구 국 국|ㅇ 어";
const char kJoa[] = "ㅈ 조 좋 좋|ㅇ 아";

class Composition : public qt_test::EditorTest {
 protected:
  // Sends input-method events, one per space-separated step: a preedit
  // text, or "commit|preedit" (a finished syllable and the next one's start).
  void Ime(const QString& steps) {
    for (const QString& step : steps.split(QLatin1Char(' '))) {
      const QStringList parts = step.split(QLatin1Char('|'));
      QInputMethodEvent event(parts.last(), {});
      if (parts.size() == 2) event.setCommitString(parts.first());
      QApplication::sendEvent(client, &event);
    }
  }
};

TEST_F(Composition, HangukeoJoaLandsOnceHoweverTheSyllableEnds) {
  // Line 1: the input method commits first, then passes the key on.
  Ime(kHanguk + QString(" 어|"));
  Keys({Qt::Key_Space});
  Ime(kJoa + QString(" 아|"));
  Keys({Qt::Key_Return});
  // Line 2: the key arrives while the syllable is still composed; the editor
  // commits it, and the input method's own late commit of it adds nothing.
  Ime(kHanguk);
  Keys({Qt::Key_Space});
  Ime("어|");
  Ime(kJoa);
  Keys({Qt::Key_Return});
  Ime("아|");
  // Line 3: a click elsewhere ends the composition where it was typed, and
  // still moves the caret.
  Ime(kHanguk + QString(" 어|"));
  Keys({Qt::Key_Space});
  Ime(kJoa);
  QTest::mouseClick(client, Qt::LeftButton, Qt::NoModifier, CellPoint(0, 0));
  EXPECT_FALSE(Edit().IsComposing());
  EXPECT_EQ(widget->Text(), QString("한국어 좋아\n한국어 좋아\n한국어 좋아"));
  EXPECT_EQ(Edit().GetCursorPos(), CPoint(0, 0));
  // Each syllable is one undo step: one undo takes back only the last "아".
  EXPECT_TRUE(Edit().Undo());
  EXPECT_EQ(chartcore::qt::ToQString(Edit().GetLineText(2)), QString("한국어 좋"));
}

TEST_F(Composition, FocusChangeAndArrowCommitOnceAndLateCommitIsDropped) {
  QLineEdit other(widget.get());
  other.show();
  Ime(kJoa);
  other.setFocus();
  QApplication::processEvents();
  EXPECT_FALSE(Edit().IsComposing());
  EXPECT_EQ(widget->Text(), QString("좋아"));
  // The platform delivering the same syllable afterwards changes nothing,
  client->setFocus();
  Ime("아|");
  EXPECT_EQ(widget->Text(), QString("좋아"));
  // but a new composition of the same syllable is typed normally.
  Ime("ㅇ 아 아|");
  EXPECT_EQ(widget->Text(), QString("좋아아"));
  // An arrow key ends a composition too: the syllable first, then the move.
  Ime("가");
  Keys({Qt::Key_Left});
  EXPECT_EQ(widget->Text(), QString("좋아아가"));
  EXPECT_EQ(Edit().GetCursorPos(), CPoint(3, 0));
}

TEST_F(Composition, PreeditIsPaintedAtTheCaretNotInTheBuffer) {
  widget->SetFontPointSize(24);
  QTest::keyClicks(client, "ab");
  Keys({Qt::Key_Left});  // caret between "a" and "b"
  const QImage before = Grab();
  Ime("한");
  EXPECT_TRUE(Edit().IsComposing());
  EXPECT_EQ(widget->Text(), QString("ab"));
  const QImage during = Grab();
  const QRgb white = qRgb(255, 255, 255);
  const int width = Edit().GetCharPixelWidth(L'한');
  // The syllable, with far more strokes than the "b" that stood there, and
  // "b" moved right by its width.
  const QRect at = CellRect(0, 1, 1).adjusted(0, 0, width, 0);
  EXPECT_GT(CountOther(during, at, white), CountOther(before, at, white) + 20);
  EXPECT_GT(CountOther(during, CellRect(0, 1, 2).translated(width, 0), white), 10);
  // The input method is told where the composition starts.
  EXPECT_EQ(client->inputMethodQuery(Qt::ImCursorRectangle).toRect().topLeft(), CellRect(0, 1, 1).topLeft());
  // Cancelling (the last jamo deleted) leaves the text and picture as they were.
  Ime("");
  EXPECT_FALSE(Edit().IsComposing());
  EXPECT_EQ(widget->Text(), QString("ab"));
  EXPECT_EQ(Grab(), before);
}

}  // namespace
