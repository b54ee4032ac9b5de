// Loads reports in a real browser and looks at what nobody may see: scripts that run, requests that
// go out, pages wider than the screen, and violations of accessibility rules.
//
// usage: report_in_browser.mjs TOOL FOLDER PROFILE... [--shots FOLDER]
//
// The tool writes a page about each profile alone and one about all of them into FOLDER. With
// --shots a picture of each page at each width and in each scheme is left for people to look at.
import { execFileSync } from 'node:child_process';
import { createRequire } from 'node:module';
import fs from 'node:fs';
import path from 'node:path';
import { pathToFileURL } from 'node:url';

const modules = createRequire(path.join(process.env.VKCL_NODE_MODULES ?? process.cwd(), 'x.js'));
const { chromium } = modules('playwright-core');
const axeSource = fs.readFileSync(modules.resolve('axe-core/axe.min.js'), 'utf8');

const args = process.argv.slice(2);
const shotsAt = args.indexOf('--shots');
const shots = shotsAt < 0 ? null : args.splice(shotsAt, 2)[1];
const [tool, folder, ...profiles] = args;
const browserPath = process.env.VKCL_CHROMIUM ?? '/usr/bin/chromium';

// The page about all profiles is looked at in each view, the others in one of them in turn.
const VIEWS = [
  { width: 390, scheme: 'light' },
  { width: 1280, scheme: 'dark' },
  { width: 390, scheme: 'dark' },
  { width: 1280, scheme: 'light' },
];
const NARROWEST = 360;
const LAUNCH = [
  '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
  '--disable-background-networking', '--disable-component-update', '--disable-sync',
];

let failures = 0;
function fail(page, what) {
  failures += 1;
  console.log(`FAIL ${page}: ${what}`);
}

// One page for each profile, and one for all.
function writePages() {
  const pages = profiles.map((profile, i) => ({
    name: `${i}-${path.basename(profile).replace(/[^A-Za-z0-9.]/g, '_')}.html`, of: [profile] }));
  pages.push({ name: 'all.html', of: profiles });
  return pages.map(({ name, of }) => {
    const file = path.join(folder, name);
    execFileSync(tool, ['report', ...of, '-o', file, '--force'], { stdio: ['ignore', 'ignore', 'inherit'] });
    return { name, file, of };
  });
}

// In the page, after it was loaded: what stands there that must not.
function findIntruders() {
  const found = [];
  const bad = 'script,img,iframe,object,embed,link,base,form,input,button,audio,video,source,use,' +
    'image,foreignObject,animate,set,template,math,style ~ style';
  for (const element of document.querySelectorAll(bad)) found.push(`<${element.localName}>`);
  for (const element of document.querySelectorAll('*')) {
    for (const { name, value } of element.attributes) {
      if (name.startsWith('on')) found.push(`attribute ${name} of <${element.localName}>`);
      if (/^(href|src|srcset|xlink:href|action|data)$/.test(name) && !/^#f\d+(-[a-z]+)?$/.test(value)) {
        found.push(`${name}="${value}"`);
      }
      if (/^(d|x|y|cx|cy|r|width|height|points|viewBox)$/.test(name) && /nan|inf|undefined/i.test(value)) {
        found.push(`${name}="${value}"`);
      }
    }
  }
  const ids = [...document.querySelectorAll('[id]')].map((element) => element.id);
  for (const id of ids.filter((one, i) => ids.indexOf(one) !== i)) found.push(`id ${id} twice`);
  for (const link of document.querySelectorAll('a[href^="#"]')) {
    if (!document.getElementById(link.hash.slice(1))) found.push(`link to nowhere: ${link.hash}`);
  }
  return [...new Set(found)];
}

function checkLayout() {
  const wide = [];
  const width = document.documentElement.clientWidth;
  if (document.documentElement.scrollWidth > width) {
    for (const element of document.querySelectorAll('body *')) {
      if (element.closest('.scroll') && !element.matches('.scroll')) continue;
      if (element.getBoundingClientRect().right > width + 0.5) wide.push(element.outerHTML.slice(0, 80));
    }
    wide.unshift(`scrolls to ${document.documentElement.scrollWidth} of ${width}`);
  }
  return wide.slice(0, 4);
}

// Texts of charts against their ground: axe does not look at them.
function checkChartContrast() {
  const channel = (value) => (value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4);
  const luminance = (color) => {
    const [r, g, b] = color.match(/[\d.]+/g).slice(0, 3).map((part) => channel(part / 255));
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
  };
  const ground = luminance(getComputedStyle(document.body).backgroundColor);
  const ratio = (color) => {
    const one = luminance(color);
    return (Math.max(one, ground) + 0.05) / (Math.min(one, ground) + 0.05);
  };
  const faint = new Set();
  for (const text of document.querySelectorAll('svg.plot text')) {
    const color = getComputedStyle(text).fill;
    if (ratio(color) < 4.5) faint.add(`text ${color}`);
  }
  for (const line of document.querySelectorAll('svg .line')) {
    const color = getComputedStyle(line).stroke;
    if (ratio(color) < 3) faint.add(`line ${color}`);
  }
  return [...faint];
}

async function look(context, page, view) {
  const label = `${page.name} at ${view.width}, ${view.scheme}`;
  const tab = await context.newPage();
  const requests = [];
  tab.on('request', (request) => requests.push(request.url()));
  tab.on('dialog', async (dialog) => { fail(label, `dialog ${dialog.message()}`); await dialog.dismiss(); });
  tab.on('pageerror', (error) => fail(label, `script error ${error.message}`));
  tab.on('console', (message) => fail(label, `console: ${message.text()}`));
  const url = pathToFileURL(page.file).href;
  await tab.goto(url, { waitUntil: 'load' });
  for (const request of requests.filter((one) => one !== url)) fail(label, `request of ${request}`);
  if (!(await tab.title()).startsWith('Profile report: ')) fail(label, `title ${await tab.title()}`);
  for (const intruder of await tab.evaluate(findIntruders)) fail(label, `holds ${intruder}`);
  for (const wide of await tab.evaluate(checkLayout)) fail(label, `too wide: ${wide}`);
  for (const faint of await tab.evaluate(checkChartContrast)) fail(label, `faint ${faint}`);
  if (shots) {
    const name = `${page.name}-${view.width}-${view.scheme}.png`;
    await tab.screenshot({ path: path.join(shots, name), fullPage: true });
  }
  await tab.setViewportSize({ width: NARROWEST, height: 900 });
  for (const wide of await tab.evaluate(checkLayout)) fail(label, `too wide for ${NARROWEST}: ${wide}`);
  await tab.setViewportSize({ width: view.width, height: 900 });
  // Folded parts are looked at, too.
  await tab.evaluate(() => document.querySelectorAll('details').forEach((one) => { one.open = true; }));
  for (const wide of await tab.evaluate(checkLayout)) fail(label, `too wide unfolded: ${wide}`);
  await tab.evaluate(axeSource);
  const results = await tab.evaluate(() => globalThis.axe.run(document, { resultTypes: ['violations'] }));
  for (const violation of results.violations) {
    fail(label, `${violation.id}: ${violation.help}: ${violation.nodes.slice(0, 2).map((node) => node.html).join(' | ').slice(0, 300)}`);
  }
  if (results.passes.length < 10) fail(label, `axe looked at ${results.passes.length} rules only`);
  await tab.close();
}

// The eyes of this test: a page with everything in it that is forbidden must fail in each way.
async function provesItself(browser) {
  const file = path.join(folder, 'bad.html');
  fs.writeFileSync(file, '<!DOCTYPE html><html><head><title>Profile report: x</title></head><body style="background:#fff">' +
    '<img src="file:///nothing.png" onerror="document.title=\'pwned\'"><div style="width:2000px">wide</div>' +
    '<a href="javascript:alert(1)"></a><svg class="plot"><path d="MNaN 1"/><text fill="#eee">faint</text></svg>' +
    '<script>console.log("ran")</script></body></html>');
  const before = failures;
  const context = await browser.newContext({ viewport: { width: 390, height: 800 } });
  const said = [];
  const log = console.log;
  console.log = (text) => said.push(text);
  await look(context, { name: 'bad.html', file }, { width: 390, scheme: 'light' });
  console.log = log;
  failures = before;
  await context.close();
  for (const needed of ['console: ran', 'request of file:///nothing.png', 'holds <img>', 'holds <script>',
    'attribute onerror', 'holds href="javascript:alert(1)"', 'holds d="MNaN 1"', 'too wide',
    'faint text', 'html-has-lang', 'image-alt']) {
    if (!said.some((line) => line.includes(needed))) fail('bad.html', `did not see: ${needed}`);
  }
}

const userData = fs.mkdtempSync(path.join(folder, 'browser-'));
const browser = await chromium.launch({ executablePath: browserPath, headless: true, args: LAUNCH,
  env: { ...process.env, HOME: userData, XDG_CONFIG_HOME: userData, XDG_CACHE_HOME: userData } });
let looks = 0;
try {
  await provesItself(browser);
  const pages = writePages();
  for (const [v, view] of VIEWS.entries()) {
    const context = await browser.newContext({ viewport: { width: view.width, height: 900 },
      colorScheme: view.scheme });
    for (const [p, page] of pages.entries()) {
      if (page.of.length === 1 && p % VIEWS.length !== v) continue;
      await look(context, page, view);
      looks += 1;
    }
    await context.close();
  }
} finally {
  await browser.close();
  fs.rmSync(userData, { recursive: true, force: true });
}
console.log(`${looks} looks at pages, ${failures} failures`);
process.exit(failures === 0 && looks > 0 ? 0 : 1);
