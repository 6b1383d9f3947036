"""What tests of pages share: a browser, and how to ask what a page shows."""
import decimal
import json
import tempfile
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait


def money(value):
    """As a browser rounds it: the shortest digits that mean the number, and half upwards."""
    return f"{decimal.Decimal(repr(value)).quantize(decimal.Decimal('0.01'), decimal.ROUND_HALF_UP):,}".replace("-", "−")


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        options = webdriver.ChromeOptions()
        for flag in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--window-size=1280,900"):
            options.add_argument(flag)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        cls.browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        cls.folder = tempfile.TemporaryDirectory()

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.folder.cleanup()

    def tearDown(self):
        """Whatever a test does: no error, and nothing but the page itself is asked for."""
        self.assertEqual([entry["message"] for entry in self.browser.get_log("browser")], [])
        messages = [json.loads(entry["message"])["message"] for entry in self.browser.get_log("performance")]
        asked = [message["params"]["request"]["url"] for message in messages if message["method"] == "Network.requestWillBeSent"]
        self.assertEqual([url for url in asked if url != self.url and not url.startswith("data:")], [])
        self.assertIn(self.url, asked)

    def show(self, page):
        self.url = f"file://{page}"
        self.browser.get(self.url)

    def one(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def all(self, selector):
        return [element.get_attribute("textContent") for element in self.browser.find_elements(By.CSS_SELECTOR, selector)]

    def text(self, selector):
        return self.one(selector).get_attribute("textContent")

    def press(self, selector, *keys):
        self.one(selector).send_keys(*keys)

    def colour_scheme(self, scheme):
        """Sets what the reader prefers, and waits for the frame before which the page is told of it."""
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
        self.browser.execute_async_script("const done = arguments[0]; requestAnimationFrame(() => requestAnimationFrame(done))")

    def unfold(self, selector):
        """Opens details, and waits for the content that they make then."""
        self.browser.execute_script("document.querySelectorAll(arguments[0]).forEach(details => details.open = true)", selector)
        WebDriverWait(self.browser, 10).until(lambda browser: browser.execute_script(
            "return [...document.querySelectorAll(arguments[0])].every(details => details.children.length > 1)", selector))
