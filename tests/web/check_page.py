"""Opens pages of results in Chromium and holds what they show against the documents.

    check_page.py MAKE_PAGE ALGOSERVER
"""
import json
import pathlib
import re
import subprocess
import sys
import unittest

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select, WebDriverWait

import documents
from browser import PageTest, money

TIMING = {"callbacks": [{"job": "one", "name": "OnPrice", "count": 120000, "meanNanoseconds": 2500}]}


class Page(PageTest):
    def open(self, *results, timing=None):
        folder = pathlib.Path(self.folder.name)
        for old in folder.glob("*.timing"):
            old.unlink()
        files = [folder / f"run{index}.json" for index in range(len(results))]
        for file, result in zip(files, results):
            file.write_text(json.dumps(result, separators=(",", ":")))
        if timing:
            pathlib.Path(f"{files[0]}.timing").write_text(json.dumps(timing))
        page = folder / "page.html"
        subprocess.run([sys.argv[1], page, *files], check=True)
        self.show(page)
        return page.stat().st_size

    def window(self):
        return [documents.parse(text) for text in self.text("#pictures .range").removesuffix(" UTC").split(" to ")]

    def pictures(self):
        """What is painted in each chart, by a hash of its canvas."""
        return self.browser.execute_script("return [...document.querySelectorAll('#pictures .plot')].map(plot => plot.querySelector('canvas').toDataURL())")

    def test_numbers_are_those_of_the_document(self):
        document = documents.make(capital=None, days=400, trips=60)
        self.open(document, timing=TIMING)
        result = document["results"][0]
        tile = lambda name: self.text(f"[data-measure={name}] .value")
        self.assertEqual(tile("netProfit"), "1,234.50")
        self.assertEqual(tile("fees"), "1,234,567.89")
        self.assertEqual(tile("winRate"), f"{100 * result['measures']['winRate']:.2f} %")
        self.assertIn("95 %: −0.50 to 2.25", self.text("[data-measure=sharpe]"))
        self.assertIn("formula of sharpe", self.text("[data-measure=sharpe]"))
        self.assertEqual(tile("return"), "–Not known without --capital.")
        self.unfold("#measures > .numbers, #panel-price .numbers")
        rows = self.all("#measures tbody tr")
        self.assertEqual(len(rows), len(documents.DEFINITIONS))
        self.assertIn("The averageHolding2 h 3 mintimeformula of averageHolding", rows)
        self.assertEqual(self.all("#trips tbody tr:nth-child(2) td:nth-child(8)"), [money(result["roundTrips"]["rows"][1][7])])
        self.assertEqual(self.all("#months tbody .heat"), [money(month["profit"]) for month in result["months"]])
        self.assertIn("OnPriceone120,00002.5 µs300 ms", self.all("#callbacks tbody tr"))
        self.assertIn("120 orders of 127", self.text("#orders .note"))
        self.assertIn("1–25 of 120 rows", self.all("#panel-price [role=status]"))

    def test_pages_of_real_runs_and_of_their_records(self):
        folder, examples = pathlib.Path(self.folder.name), pathlib.Path(__file__).resolve().parents[2] / "examples"
        algoserver = lambda *arguments: subprocess.run([sys.argv[2], *arguments], cwd=folder, check=True, capture_output=True)
        for index, (script, data) in enumerate((("market_maker", "demo_quotes"), ("bollinger", "demo_bars"), ("moving_average", "demo_quotes"))):
            algoserver("run", examples / f"{script}.lua", "--data", examples / f"data/{data}.csv.gz", "--capital", "1000000", "--report", "run.html",
                       "--json", "run.json", "--record", f"{index}.jsonl")
            algoserver("report", f"{index}.jsonl", "-o", "record.html")
            document = json.loads((folder / "run.json").read_text())
            result = document["results"][0]
            for page in ("run.html", "record.html"):
                with self.subTest(script=script, page=page):
                    self.show(folder / page)
                    self.unfold("#measures > .numbers")
                    shown = self.browser.execute_script("""return [...document.querySelectorAll('#measures tbody tr')].map(
                        row => [row.children[0].textContent, row.children[1].querySelector('span').title])""")
                    self.assertEqual({title: float(value) for title, value in shown if re.match(r"-?\d", value)},
                                     {one["title"]: result["measures"][one["name"]] for one in document["definitions"]
                                      if result["measures"][one["name"]] is not None})
                    self.assertEqual(self.all("#verdict li"), result["verdict"])
                    self.assertIn(f" of {result['roundTrips']['all']:,} rows", self.text("#trips [role=status]"))
                    self.assertEqual([" µs" in row or " ns" in row for row in self.all("#callbacks tbody tr")].count(True) > 0, page == "run.html")
                    self.tearDown()
        algoserver("report", "0.jsonl", "2.jsonl", "-o", "both.html")
        self.show(folder / "both.html")
        self.assertEqual([option.text for option in Select(self.one("#choices select")).options], ["0.jsonl", "2.jsonl"])

    def test_charts_zoom_together_by_mouse_and_keys(self):
        self.open(documents.make())
        full, before = self.window(), self.pictures()
        self.press("#panel-price .plot", "+")
        begin, end = self.window()
        self.assertAlmostEqual(end - begin, (full[1] - full[0]) / 2, delta=1000)
        self.assertTrue(all(was != now for was, now in zip(before, self.pictures())))
        self.press("#panel-equity .plot", Keys.END)
        self.assertEqual(self.window()[1], full[1])
        self.press("#panel-equity .plot", "0")
        self.assertEqual((self.window(), self.pictures()), (full, before))
        self.press("#panel-equity .plot", ".")
        self.assertRegex(self.text(".stack > [aria-live]"), r"^2013-10-\d\d \d\d:\d\d:\d\d.*  [\d,]+\.\d\d \([\d,.]+ to [\d,.]+\)$")
        plot = self.one("#panel-price .plot")
        ActionChains(self.browser).move_to_element(plot).click_and_hold().move_by_offset(200, 0).release().perform()
        self.assertLess(self.window()[1] - self.window()[0], (full[1] - full[0]) / 4)
        self.assertTrue(all(was != now for was, now in zip(before, self.pictures())))
        self.press("#panel-price .plot", *40 * ["+"])
        self.assertLess(self.window()[1] - self.window()[0], 1)

    def test_tables_filter_sort_and_open(self):
        document = documents.make()
        self.open(document)
        trips = document["results"][0]["roundTrips"]["rows"]
        self.one("#trips input").send_keys("profit<0 buy")
        lost = sorted(trip[7] for trip in trips if trip[7] < 0 and trip[1] == "Buy")
        self.assertIn(f" of {len(lost)} rows (40 without the filter)", self.text("#trips [role=status]"))
        self.press("#trips th:nth-child(8) button", Keys.ENTER)
        self.assertEqual(self.all("#trips td:nth-child(8)"), [money(profit) for profit in lost])
        self.press("#trips tbody tr", Keys.ARROW_DOWN)
        self.browser.switch_to.active_element.send_keys(Keys.ENTER)
        trip = next(trip for trip in trips if trip[7] == lost[1])
        begin, end = self.window()
        self.assertTrue(begin <= trip[3] and trip[4] <= end <= trip[4] + 2 * (trip[4] - trip[3]))
        self.assertIn(f"limit at {trip[5]}", self.text("#story"))
        self.browser.switch_to.active_element.send_keys(Keys.ESCAPE)
        self.assertEqual(self.browser.switch_to.active_element.get_attribute("textContent"), self.all("#trips tbody tr")[1])

    def test_texts_of_scripts_are_texts(self):
        self.open(documents.hostile())
        self.assertIsNone(self.browser.execute_script("return window.hacked"))
        self.assertEqual(self.browser.find_elements(By.TAG_NAME, "img"), self.browser.find_elements(By.CSS_SELECTOR, ".plot img"))
        self.unfold("details")
        for selector in ("#verdict li.first", "#log tbody tr:first-child td:last-child", "#failures tbody th", "#run-facts tbody th",
                         "#panel-price h3", "#panel-price .legend li", ".choice option", ".facts dd"):
            self.assertTrue(any(documents.HOSTILE in text for text in self.all(selector)), selector)
        self.assertIn("ends in the middle of the run", self.text("#run-facts .warning"))
        self.assertIn("The place in the queue.", self.text("#run-facts"))

    def test_several_runs_stand_side_by_side(self):
        runs = [documents.make(seed=seed, profit=profit) for seed, profit in ((1, 500), (1, -20.25), (1, 910))]
        runs[1]["run"]["settings"]["fills"] = "cross"
        self.open(*runs)
        self.assertEqual(self.all("#comparison .scroll:first-child tbody tr"), ["fillsqueuecrossqueue"])
        self.assertIn("The netProfit500.00−20.25910.00 (best)", self.all("#comparison tbody tr"))
        Select(self.one("#choices select")).select_by_visible_text("run1.json")
        self.assertEqual(self.text("[data-measure=netProfit] .value"), "−20.25")

    def test_nothing_traded(self):
        empty = documents.make(trips=0, points=0, log=0)
        self.open(empty)
        self.assertIn("no order was sent", self.text("[data-measure=winRate] .value"))
        self.assertIn("No round trips.", self.text("#trips"))
        empty.update(results=[], products=[], jobs=[], lines=[])
        self.open(empty)
        self.assertIn("No order was sent", self.text("#measures"))

    def test_dark_and_large(self):
        document = documents.large()
        document["results"][0]["equity"]["exposure"][50::100] = 82 * [1e7]
        self.assertLess(self.open(document), 8 << 20)
        spikes = self.browser.execute_script("""const canvas = document.querySelector('#panel-exposure canvas');
            const {data} = canvas.getContext('2d').getImageData(0, 20, canvas.width, 1);
            return data.filter((red, index) => index % 4 === 0 && red < 60 && data[index + 1] > 100 && data[index + 3] > 99).length""")
        self.assertGreaterEqual(spikes, 82, "each of these points is painted, though seven share a pixel")
        self.assertIn("1–25 of 10,000 rows", self.text("#trips [role=status]"))
        light = self.pictures()
        for scheme, colour in (("dark", "rgb(20, 24, 28)"), ("light", "rgb(255, 255, 255)")):
            self.colour_scheme(scheme)
            self.assertEqual(self.one("body").value_of_css_property("background-color").replace("rgba", "rgb").replace(", 1)", ")"), colour)
            self.assertEqual(self.pictures() == light, scheme == "light")
        self.browser.set_window_size(500, 900)
        fits = "const page = document.documentElement; return page.scrollWidth <= page.clientWidth"
        WebDriverWait(self.browser, 5).until(lambda browser: browser.execute_script(fits), "a narrow page scrolls in its tables only")
        self.browser.set_window_size(1280, 900)


unittest.main(argv=sys.argv[:1])
