; Text to tokens
