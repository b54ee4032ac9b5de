// How a report looks, on screens of any width, light and dark, and in print.
#pragma once

#include "inspect/report/HtmlText.h"

namespace vkcl {

// Texts have a contrast of 4.5:1 and more on all their grounds, lines and marks of charts 3:1.
// Charts tell their curves apart by dashes and marks as well as by colours.
inline constexpr Html kPageStyle = R"css(
:root{color-scheme:light dark;
--ground:#fff;--raised:#f6f7f9;--text:#1b1f24;--muted:#57606a;--rule:#d8dee4;--tick:#e6e9ed;
--zero:#9aa3ad;--accent:#0a5fb4;--error:#b3261e;--warning:#8a5300;--private:#0a5fb4;
--standard:#86adac;--standard2:#b4cdcc;--header:#57606a;--table:#9aa3ad;--hatch:#c3cad2;
--s0:#00788f;--s1:#b5186b;--s2:#8a6a00;--s3:#24292f;--s4:#b34700;--s5:#5a3fc0;--s6:#b3261e;--s7:#1a7f37}
@media screen and (prefers-color-scheme:dark){:root{
--ground:#0f1318;--raised:#171c23;--text:#e6e9ed;--muted:#9da7b3;--rule:#2c343d;--tick:#232a32;
--zero:#5e6a76;--accent:#6cb4ff;--error:#ff8f85;--warning:#f0b35a;--private:#4a9eff;
--standard:#47706f;--standard2:#335150;--header:#9da7b3;--table:#66727e;--hatch:#3a444f;
--s0:#35c2da;--s1:#ff79b8;--s2:#e0bd2b;--s3:#dfe4ea;--s4:#ff9a52;--s5:#b3a0ff;--s6:#ff8f85;--s7:#57d27c}}
*{box-sizing:border-box}
html{-webkit-text-size-adjust:100%;scroll-behavior:smooth}
@media (prefers-reduced-motion:reduce){html{scroll-behavior:auto}}
body{margin:0 auto;max-width:1240px;padding:0 clamp(16px,3vw,40px) 48px;background:var(--ground);
color:var(--text);font:15px/1.5 system-ui,-apple-system,"Segoe UI",Roboto,"Helvetica Neue",
"Liberation Sans",Arial,sans-serif;overflow-wrap:break-word}
h1,h2,h3,h4{line-height:1.25;font-weight:600;margin:0}
body>header{padding:20px 0 0}
h1{font-size:14px;color:var(--muted);font-weight:500}
h2{font-size:clamp(24px,4vw,32px);letter-spacing:-.01em;overflow-wrap:anywhere;margin-top:12px}
h3{font-size:19px;margin:44px 0 14px;padding-top:14px;border-top:1px solid var(--rule)}
h4{font-size:15px;margin:0 0 8px}
details+h4,.charts+h4{margin-top:24px}
p{margin:0 0 12px;max-width:72ch}
a{color:var(--accent);text-underline-offset:2px}
:focus-visible{outline:2px solid var(--accent);outline-offset:2px;border-radius:3px}
.lead{color:var(--muted);margin:4px 0 16px}
.unseen{position:absolute;width:1px;height:1px;overflow:hidden;clip-path:inset(50%);white-space:nowrap}
.muted,.note,.unit{color:var(--muted)}
.note{font-size:13px;margin:4px 0}
.warn{border-left:3px solid var(--warning);padding:2px 0 2px 12px}
code{font:13px/1.4 ui-monospace,SFMono-Regular,Menlo,Consolas,"Liberation Mono",monospace;
overflow-wrap:anywhere}
td code,th code{white-space:nowrap;overflow-wrap:normal}
.fields code{white-space:normal;overflow-wrap:anywhere}
.text{white-space:pre-wrap;overflow-wrap:anywhere}
article+article{margin-top:72px;border-top:3px solid var(--text);padding-top:8px}
.contents ul{display:flex;flex-wrap:wrap;gap:6px 18px;list-style:none;margin:0;padding:0;font-size:14px}
.index{margin:16px 0 44px}
.facts{display:grid;grid-template-columns:repeat(auto-fill,minmax(min(210px,100%),1fr));
gap:14px 24px;margin:0 0 16px}
@media (max-width:600px){.facts{grid-template-columns:1fr 1fr}}
.facts dt{font-size:13px;color:var(--muted)}
.facts dd{margin:0;overflow-wrap:anywhere}
.timeline{list-style:none;margin:0 0 22px;padding:0;display:grid;
grid-template-columns:repeat(7,minmax(0,1fr))}
.timeline li{position:relative;padding:26px 10px 0 0;font-size:13px;line-height:1.35}
.timeline li::before{content:"";position:absolute;top:0;left:0;width:14px;height:14px;
border:2px solid var(--zero);border-radius:50%;background:var(--ground);z-index:1}
.timeline li::after{content:"";position:absolute;top:6px;left:14px;right:0;border-top:2px dotted var(--zero)}
.timeline li:last-child::after{display:none}
.timeline .reached::before{background:var(--accent);border-color:var(--accent)}
.timeline .reached::after{border-top:2px solid var(--accent)}
.timeline .current::after{border-top:2px dotted var(--zero)}
.timeline .current::before{box-shadow:0 0 0 3px var(--ground),0 0 0 5px var(--accent)}
.timeline span{display:block}
.timeline .name{font-size:14px;font-weight:600}
.timeline .open .name{font-weight:400}
@media screen and (max-width:820px){.timeline{grid-template-columns:1fr}
.timeline li{padding:0 0 16px 30px}
.timeline li::before{top:2px}
.timeline li::after,.timeline .current::after{top:18px;bottom:0;left:6px;right:auto;border-top:0}
.timeline li::after,.timeline .current::after{border-left:2px dotted var(--zero)}
.timeline .reached:not(.current)::after{border-left:2px solid var(--accent)}}
table{border-collapse:collapse;width:100%;font-size:14px}
caption{text-align:left;font-size:13px;color:var(--muted);padding:0 0 6px}
th,td{text-align:left;vertical-align:top;padding:6px 14px 6px 0;border-bottom:1px solid var(--rule)}
thead th{font-size:13px;font-weight:500;color:var(--muted)}
tbody th{font-weight:500}
td{font-variant-numeric:tabular-nums}
.right,.numbers td,.numbers th{text-align:right;white-space:nowrap}
.numbers{width:auto;min-width:0}
.numbers td,.numbers th{padding:3px 0 3px 18px;font-variant-numeric:tabular-nums}
.scroll{overflow-x:auto;max-width:100%}
.fields{table-layout:fixed}
.fields th:first-child{width:27%}
.fields th:nth-child(2){width:36%}
.fields th,.fields td{overflow-wrap:anywhere}
.records{columns:2;column-gap:48px}
@media (max-width:960px){.records{columns:auto}}
.record{break-inside:avoid-column;margin:0 0 28px}
.badge{display:inline-block;font-size:12px;line-height:1;padding:3px 6px;border:1px solid var(--private);
border-radius:3px;color:var(--accent)}
.severity{white-space:nowrap}.severity.error{color:var(--error)}.severity.warning{color:var(--warning)}
details{margin:8px 0 0}
summary{cursor:pointer;font-size:13px;color:var(--accent);width:fit-content}
details[open]>summary{margin-bottom:8px}
figure{margin:0}
figcaption{font-weight:600;font-size:14px;margin-bottom:6px;overflow-wrap:anywhere}
.charts{display:grid;grid-template-columns:repeat(auto-fill,minmax(min(320px,100%),1fr));gap:32px 40px;
margin:0 0 16px}
.charts.wide{grid-template-columns:repeat(auto-fill,minmax(min(440px,100%),1fr))}
.chart{min-width:0;break-inside:avoid}
.plot{display:block;width:100%;height:auto;overflow:hidden;max-width:620px}
@media (min-width:900px){.wide .plot text{font-size:8.5px}.wide .plot circle{r:2.2px}}
.plot text{font-size:11px;fill:var(--muted);font-family:inherit;font-variant-numeric:tabular-nums}
.plot .axis{fill:var(--text)}
.plot .mid{text-anchor:middle}.plot .end{text-anchor:end}
.plot .bar text{fill:var(--text)}
.tick,.zero,.diagonal,.line{fill:none}
.tick{stroke:var(--tick);stroke-width:1}.zero{stroke:var(--zero);stroke-width:1}
.diagonal{stroke:var(--zero);stroke-dasharray:2 3}
.line{stroke-width:2;stroke-linejoin:round;stroke-linecap:butt}
.dots circle{stroke:var(--zero);stroke-width:.5}
.dots circle:hover{stroke:var(--text);stroke-width:2}
.s0{--c:var(--s0)}.s1{--c:var(--s1)}.s2{--c:var(--s2)}.s3{--c:var(--s3)}
.s4{--c:var(--s4)}.s5{--c:var(--s5)}.s6{--c:var(--s6)}.s7{--c:var(--s7)}
.line{stroke:var(--c)}.mark{fill:var(--c)}.bar rect{fill:var(--c)}
.s1 .line{stroke-dasharray:7 3}.s2 .line{stroke-dasharray:2 3}.s4 .line{stroke-dasharray:8 3 2 3}
.s5 .line{stroke-dasharray:12 4}.s6 .line{stroke-dasharray:4 4}.s7 .line{stroke-dasharray:1 3 6 3}
.legend{display:flex;flex-wrap:wrap;gap:4px 18px;list-style:none;margin:6px 0 0;padding:0;font-size:13px}
.legend li{display:flex;align-items:center;gap:7px;min-width:0}
.swatch{width:34px;height:10px;flex:none}
.chip{width:12px;height:12px;vertical-align:-1px;border:1px solid var(--zero)}
.map{margin-bottom:20px}
.strip{display:block;width:100%;height:48px}
.strip .header,.key.header{fill:var(--header);background:var(--header)}
.strip .table,.key.table{fill:var(--table);background:var(--table)}
.strip .standard,.key.standard{fill:var(--standard);background:var(--standard)}
.strip .standard.other{fill:var(--standard2)}
.strip .private,.key.private{fill:var(--private);background:var(--private)}
.strip .gap{fill:var(--raised);stroke:var(--hatch);stroke-dasharray:3 3;vector-effect:non-scaling-stroke}
.key.gap{background:var(--raised);border:1px dashed var(--zero)}
.key{width:14px;height:10px;flex:none}.key.private{height:18px}
.ends{display:flex;justify-content:space-between;max-width:none;font-size:13px;color:var(--muted);margin:4px 0 0}
footer{margin-top:56px;padding-top:12px;border-top:1px solid var(--rule);font-size:13px;color:var(--muted)}
footer p{margin:0}
@page{margin:16mm 14mm}
@media print{body{max-width:none;padding:0;font-size:10pt}
*{print-color-adjust:exact;-webkit-print-color-adjust:exact}
.contents,details:not([open]){display:none}
a{color:inherit;text-decoration:none}
h3{margin-top:24px;break-after:avoid}h4,figcaption,caption{break-after:avoid}
tr,.facts div{break-inside:avoid}
article+article{break-before:page;border-top:0;margin-top:0}
.scroll{overflow:visible}
.charts,.charts.wide{grid-template-columns:repeat(2,1fr);gap:20px 28px}
.records{columns:auto}thead{break-inside:avoid;break-after:avoid}
.timeline li{font-size:10px}.timeline .name{font-size:10.5px;letter-spacing:-.01em}
.map{break-inside:avoid}.facts{break-after:avoid}tbody tr:first-child{break-before:avoid}}
)css"_html;

}  // namespace vkcl
