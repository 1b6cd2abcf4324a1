"""What the end-to-end tests are made of: a desktop, a service, a client, a browser, and how to wait for them."""
