; Title at power-on
