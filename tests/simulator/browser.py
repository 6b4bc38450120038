"""The browser that the tests of pages use."""

from selenium import webdriver


def new_browser(width, height, *arguments, **preferences):
    """One without a window, of that size, that keeps what its pages log."""
    options = webdriver.ChromeOptions()
    for argument in (
        "headless=new",
        "no-sandbox",
        "disable-dev-shm-usage",
        "disable-gpu",
        f"window-size={width},{height}",
        *arguments,
    ):
        options.add_argument("--" + argument)
    options.add_experimental_option("prefs", preferences)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(options=options)
