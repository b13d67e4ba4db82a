#include "highlight.h"

#include <cstdio>
#include <vector>

#include "chartcore/platform/types.h"
#include "chartcore/script_editor/script_edit.h"
#include "tool_text.h"

namespace chartcore {
namespace tool {
namespace {

std::string HexColour(COLORREF colour) {
  char text[8];
  std::snprintf(text, sizeof text, "#%02X%02X%02X", GetRValue(colour), GetGValue(colour), GetBValue(colour));
  return text;
}

std::string AnsiColour(COLORREF colour) {
  return "\x1b[38;2;" + std::to_string(GetRValue(colour)) + ";" + std::to_string(GetGValue(colour)) + ";" +
         std::to_string(GetBValue(colour)) + "m";
}

std::string HtmlEscape(const std::string& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      default: out += c;
    }
  }
  return out;
}

}  // namespace

std::string HighlightScript(const CString& text, const std::string& workspaceRoot, int mode, ColourStyle style,
                            const std::string& indent, const std::string& title) {
  CScriptEdit edit;
  edit.InitWindow();
  edit.InitBasicFunctionList(Wide(workspaceRoot), CString(), CString(), mode);
  edit.LocateTextBuffer()->SetText(text);

  const COLORREF background = edit.GetColor(CCrystalTextWnd::COLORINDEX_BKGND);
  const COLORREF normal = edit.GetColor(CCrystalTextWnd::COLORINDEX_NORMALTEXT);
  std::string out;
  if (style == ColourStyle::kHtml) {
    out += "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>" + HtmlEscape(title) +
           "</title></head>\n<body><pre style=\"background:" + HexColour(background) + ";color:" + HexColour(normal) +
           ";font-family:monospace\">";
  }
  std::vector<CCrystalTextWnd::TEXTBLOCK> blocks;
  int lines = edit.GetLineCount();
  if (lines > 1 && edit.GetLineLength(lines - 1) == 0) --lines;  // the text ended with a line break
  for (int line = 0; line < lines; ++line) {
    const CString chars = edit.GetLineText(line);
    edit.GetLineBlocks(line, blocks);
    if (style != ColourStyle::kHtml) out += indent;
    COLORREF shown = normal;  // the terminal's own colour at each line start
    bool plainShown = true;
    for (size_t b = 0; b < blocks.size(); ++b) {
      const int from = blocks[b].m_nCharPos;
      const int to = b + 1 < blocks.size() ? blocks[b + 1].m_nCharPos : chars.GetLength();
      if (to <= from) continue;
      const std::string piece = Printable(chars.Mid(from, to - from));
      const int index = blocks[b].m_nColorIndex;
      const COLORREF colour = edit.GetColor(index);
      if (style == ColourStyle::kHtml) {
        if (index == CCrystalTextWnd::COLORINDEX_NORMALTEXT) {
          out += HtmlEscape(piece);
        } else {
          out += "<span style=\"color:" + HexColour(colour) + "\">" + HtmlEscape(piece) + "</span>";
        }
      } else if (style == ColourStyle::kAnsi) {
        const bool plain = index == CCrystalTextWnd::COLORINDEX_NORMALTEXT;
        if (plain && !plainShown) {
          out += "\x1b[0m";
        } else if (!plain && (plainShown || colour != shown)) {
          out += AnsiColour(colour);
        }
        plainShown = plain;
        shown = colour;
        out += piece;
      } else {
        out += piece;
      }
    }
    if (style == ColourStyle::kAnsi && !plainShown) out += "\x1b[0m";
    out += "\n";
  }
  if (style == ColourStyle::kHtml) out += "</pre></body></html>\n";
  return out;
}

}  // namespace tool
}  // namespace chartcore
