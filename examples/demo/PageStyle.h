// SPDX-License-Identifier: MIT
#pragma once

namespace Demo {

/// The look of the page. Crops keep their pixels visible.
inline constexpr char kPageStyle[] = R"css(
:root {
  color-scheme: light dark;
  --paper: #fafaf8; --card: #fff; --ink: #1d1f21; --faint: #63676b; --line: #e2e2de;
  --accent: #0b5cad; --good: #1a7f37; --bad: #b3261e;
}
@media (prefers-color-scheme: dark) {
  :root {
    --paper: #16181a; --card: #1f2225; --ink: #e6e6e3; --faint: #9aa0a6; --line: #34383c;
    --accent: #7db7f0; --good: #5bbf73; --bad: #ff8a80;
  }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--paper); color: var(--ink);
       font: 16px/1.55 system-ui, "Segoe UI", "DejaVu Sans", sans-serif; }
header, main { max-width: 1240px; margin: 0 auto; padding: 0 24px; }
header { padding-top: 48px; }
h1 { font-size: 2rem; line-height: 1.2; margin: 0 0 8px; }
h2 { font-size: 1.4rem; margin: 0 0 4px; }
h3 { font-size: 1.05rem; margin: 0 0 4px; }
p { margin: 0 0 12px; max-width: 72ch; color: var(--faint); }
a { color: var(--accent); }
nav { display: flex; flex-wrap: wrap; gap: 8px 20px; padding: 8px 0 0; }
section { padding: 32px 0 16px; border-top: 1px solid var(--line); margin-top: 28px; }
article { display: grid; grid-template-columns: 1fr auto; gap: 20px;
          background: var(--card); border: 1px solid var(--line); border-radius: 8px;
          padding: 20px; margin: 20px 0; }
.whole img { width: 100%; height: auto; display: block; border-radius: 4px; }
.whole p { font-size: .92rem; }
.crops { display: grid; grid-template-columns: repeat(3, auto); gap: 12px;
         align-content: start; justify-content: start; }
.crops:empty { display: none; }
.sheet { display: grid; grid-template-columns: repeat(var(--columns), minmax(0, 1fr)); gap: 16px;
         margin: 20px 0; }
.sheet article { display: block; margin: 0; padding: 14px; }
.sheet .whole { display: flex; flex-direction: column; }
.sheet h3 { overflow-wrap: anywhere; }
.sheet p { margin: 0; }
.sheet .whole a:has(img) { order: -1; margin-bottom: 10px; }
.sheet .crops { grid-template-columns: repeat(3, minmax(0, 1fr)); margin-top: 12px; }
figure { margin: 0; max-width: 100%; }
.crop { image-rendering: pixelated; display: block; border-radius: 4px; max-width: 100%;
        height: auto; }
figcaption { color: var(--faint); font-size: .82rem; }
.facts { list-style: none; display: flex; flex-wrap: wrap; gap: 4px 16px; margin: 10px 0 0;
         padding: 0; font-size: .9rem; }
code { font: .86rem ui-monospace, "DejaVu Sans Mono", monospace; overflow-wrap: anywhere; }
.table { overflow-x: auto; margin: 12px 0; }
table { border-collapse: collapse; font-variant-numeric: tabular-nums; font-size: .92rem; }
th, td { padding: 6px 18px 6px 0; text-align: left; border-bottom: 1px solid var(--line);
         white-space: nowrap; }
th { color: var(--faint); font-weight: 600; }
.checks { list-style: none; padding: 0; margin: 12px 0; font-size: .92rem; }
.checks li::before { display: inline-block; width: 1.6em; font-weight: 700; }
.holds::before { content: "\2713"; color: var(--good); }
.fails::before { content: "\2717"; color: var(--bad); }
.fails { color: var(--bad); }
@media (max-width: 860px) { article { grid-template-columns: 1fr; padding: 14px; }
                            .crops { grid-template-columns: repeat(auto-fill, minmax(130px, 192px)); }
                            .sheet { grid-template-columns: repeat(auto-fill, minmax(250px, 1fr)); }
                            header, main { padding-left: 14px; padding-right: 14px; } }
)css";

}  // namespace Demo
