// Korean input through input-method events: the syllable being composed is
// drawn at the caret, and every way a composition ends commits it once.
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QTest>

#include "qt_test_util.h"

using qt_test::CountOther;
using qt_test::EditorTest;

namespace {

class Composition : public EditorTest {
 protected:
  // What the input method sends while a syllable grows.
  void Preedit(const QString& text) {
    QInputMethodEvent event(text, {});
    QApplication::sendEvent(client, &event);
  }
  // A finished syllable, with the start of the next one (if any).
  void Commit(const QString& text, const QString& next = QString()) {
    QInputMethodEvent event(next, {});
    event.setCommitString(text);
    QApplication::sendEvent(client, &event);
  }
  // "한국" and "어" up to its last preedit: the jamo a user types for them.
  void TypeHanguk() {
    Preedit("ㅎ");
    Preedit("하");
    Preedit("한");
    Commit("한", "ㄱ");
    Preedit("구");
    Preedit("국");
    Commit("국", "ㅇ");
    Preedit("어");
  }
  // "좋" and "아" up to its last preedit.
  void TypeJoa() {
    Preedit("ㅈ");
    Preedit("조");
    Preedit("좋");
    Commit("좋", "ㅇ");
    Preedit("아");
  }
  QString Line(int n) { return chartcore::qt::ToQString(Edit().GetLineText(n)); }
};

TEST_F(Composition, HangukeoJoaLandsOnceHoweverTheSyllableEnds) {
  // Line 1: the input method commits first, then passes the key on.
  TypeHanguk();
  Commit("어");
  QTest::keyClick(client, Qt::Key_Space);
  TypeJoa();
  Commit("아");
  QTest::keyClick(client, Qt::Key_Return);
  EXPECT_EQ(Line(0), QString("한국어 좋아"));

  // Line 2: the key arrives while the syllable is still composed; the
  // editor commits it, and the input method's own late commit of the same
  // syllable adds nothing.
  TypeHanguk();
  QTest::keyClick(client, Qt::Key_Space);
  Commit("어");
  TypeJoa();
  QTest::keyClick(client, Qt::Key_Return);
  Commit("아");
  EXPECT_EQ(Line(1), QString("한국어 좋아"));

  // Line 3: a click elsewhere ends the composition where it was typed.
  TypeHanguk();
  Commit("어");
  QTest::keyClick(client, Qt::Key_Space);
  TypeJoa();
  const CPoint home = Edit().TextToClient(CPoint(0, 0));
  QTest::mouseClick(client, Qt::LeftButton, Qt::NoModifier, QPoint(home.x + 1, home.y + 2));
  EXPECT_FALSE(Edit().IsComposing());
  EXPECT_EQ(widget->Text(), QString("한국어 좋아\n한국어 좋아\n한국어 좋아"));
  EXPECT_EQ(Edit().GetCursorPos(), CPoint(0, 0));  // the click still moved the caret

  // Each syllable is one undo step: one undo takes back only the last "아".
  EXPECT_TRUE(Edit().Undo());
  EXPECT_EQ(Line(2), QString("한국어 좋"));
}

TEST_F(Composition, FocusChangeAndArrowCommitOnceAndLateCommitIsDropped) {
  QLineEdit other(widget.get());
  other.show();
  TypeJoa();
  other.setFocus();
  QApplication::processEvents();
  EXPECT_FALSE(Edit().IsComposing());
  EXPECT_EQ(widget->Text(), QString("좋아"));
  // The platform delivering the same syllable afterwards changes nothing,
  client->setFocus();
  Commit("아");
  EXPECT_EQ(widget->Text(), QString("좋아"));
  // but a new composition of the same syllable is typed normally.
  Preedit("ㅇ");
  Preedit("아");
  Commit("아");
  EXPECT_EQ(widget->Text(), QString("좋아아"));
  // An arrow key ends a composition too: the syllable first, then the move.
  Preedit("가");
  QTest::keyClick(client, Qt::Key_Left);
  EXPECT_EQ(widget->Text(), QString("좋아아가"));
  EXPECT_EQ(Edit().GetCursorPos(), CPoint(3, 0));
}

TEST_F(Composition, PreeditIsPaintedAtTheCaretNotInTheBuffer) {
  widget->SetFontPointSize(24);
  QTest::keyClicks(client, "ab");
  QTest::keyClick(client, Qt::Key_Left);  // caret between "a" and "b"
  const QImage before = Grab();
  Preedit("한");
  EXPECT_TRUE(Edit().IsComposing());
  EXPECT_EQ(widget->Text(), QString("ab"));  // not in the buffer while composed
  const QImage during = Grab();
  during.save(qt_test::ShotPath("editor_preedit.png"));
  const int charWidth = Edit().GetCharPixelWidth(L'한');
  const QRect at = CellRect(0, 1, 1).adjusted(0, 0, charWidth, 0);  // where the syllable shows
  // A Hangul syllable has far more strokes than the "b" that stood there.
  EXPECT_GT(CountOther(during, at, qRgb(255, 255, 255)), CountOther(before, at, qRgb(255, 255, 255)) + 20);
  // "b" moved right by the syllable's width: its old cell is blank now but
  // for the syllable's strokes, and the cell after the syllable holds it.
  const QRect bAfter = CellRect(0, 1, 2).translated(charWidth, 0);
  EXPECT_GT(CountOther(during, bAfter, qRgb(255, 255, 255)), 10);
  // The input method is told where the composition starts.
  const QRect cursor = client->inputMethodQuery(Qt::ImCursorRectangle).toRect();
  EXPECT_EQ(cursor.topLeft(), CellRect(0, 1, 1).topLeft());
  // Cancelling (the last jamo deleted) leaves the text as it was.
  Preedit(QString());
  EXPECT_FALSE(Edit().IsComposing());
  EXPECT_EQ(widget->Text(), QString("ab"));
  EXPECT_EQ(Grab(), before);
}

}  // namespace
